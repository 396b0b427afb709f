#include "tools/common/CommandLineParser.h"

#include <array>
#include <cstdio>

#include <CLI/CLI.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace Tools {
namespace {

using testing::HasSubstr;

std::string failureIn(CLI::App& program, const std::vector<std::string>& arguments) {
    try {
        parseArguments(program, arguments);
    } catch (const UsageError& failure) {
        return failure.what();
    }
    return "none";
}

// A program with a command "paint", which takes a colour and files.
class AProgram : public testing::Test {
protected:
    AProgram() {
        program.require_subcommand(0, 1);
        addProgramOptions(program, "shop 1.2");
        CLI::App& paint = addCommand(program, "paint", "Paint a wall.\n\nThe wall must be dry.");
        paint.add_option("--colour", colour, "Colour of the wall, such as that of the neighbour's wall.")
            ->type_name("NAME")
            ->required();
        paint.add_flag("--quick")->description("Paint once. The wall is thin.");
        paint.add_option("FILE", files);
        paint.footer(helpSection("Exit codes", {{"0", "Painted."}, {"1", "Not painted."}}) +
                     exampleSection({{"shop paint --colour red", "A red wall."}}));
    }

    std::string failureOf(const std::vector<std::string>& arguments) { return failureIn(program, arguments); }

    CLI::App program{"Do what a shop does.", "shop"};
    std::string colour;
    std::vector<std::string> files;
};

constexpr char PAINT_HELP[] =
    R"(usage: shop paint [OPTION...] --colour NAME [FILE...]

Paint a wall.

The wall must be dry.

Options:
  -h, --help              Write this help.
  -V, --version           Write the version.
  --colour NAME           Colour of the wall, such as that of the neighbour's
                          wall.
  --quick                 Paint once. The wall is thin.

Exit codes:
  0     Painted.
  1     Not painted.

Examples:
  # A red wall.
  shop paint --colour red
)";

TEST_F(AProgram, ShowsTheHelpOfACommand) { EXPECT_EQ(parseArguments(program, {"help", "paint"}), PAINT_HELP); }

TEST_F(AProgram, ShowsTheHelpOfACommandByItsOption) { EXPECT_EQ(parseArguments(program, {"paint", "-h"}), PAINT_HELP); }

TEST_F(AProgram, ShowsItsOwnHelpWithItsCommands) {
    const std::string help = *parseArguments(program, {"help"});
    EXPECT_THAT(help, HasSubstr("usage: shop [OPTION...] COMMAND\n\nDo what a shop does.\n"));
    EXPECT_THAT(help, HasSubstr("Commands:\n  help        Show the help of a command.\n"));
    EXPECT_THAT(help, HasSubstr("  paint       Paint a wall.\n"));
}

TEST_F(AProgram, ShowsItsVersion) { EXPECT_EQ(parseArguments(program, {"-V"}), "shop 1.2\n"); }

TEST_F(AProgram, ShowsItsVersionForACommandToo) {
    EXPECT_EQ(parseArguments(program, {"paint", "--version"}), "shop 1.2\n");
}

TEST_F(AProgram, ReadsTheArgumentsOfACommand) {
    EXPECT_EQ(parseArguments(program, {"paint", "--colour", "[red]", "[a,b]", "\x01", "-.5", ""}), std::nullopt);
    EXPECT_EQ(colour, "[red]");
    EXPECT_EQ(files, (std::vector<std::string>{"[a,b]", "\x01", "-.5", ""}));
    EXPECT_EQ(fullName(program), "shop paint");
}

TEST_F(AProgram, SuggestsACommandForAMistypedOne) {
    EXPECT_THAT(failureOf({"pant"}), HasSubstr("pant; did you mean paint?"));
    EXPECT_THAT(failureOf({"help", "pant"}), HasSubstr("no command pant; did you mean paint?"));
    EXPECT_THAT(failureOf({"sell"}), testing::Not(HasSubstr("did you mean")));
}

TEST_F(AProgram, SuggestsAnOptionForAMistypedOne) {
    EXPECT_THAT(failureOf({"paint", "--colour", "red", "--quik"}), HasSubstr("--quik; did you mean --quick?"));
}

TEST_F(AProgram, SuggestsTheWordWithTwoCharactersExchanged) {
    EXPECT_THAT(failureOf({"piant"}), HasSubstr("piant; did you mean paint?"));
    EXPECT_THAT(failureOf({"hlep"}), HasSubstr("hlep; did you mean help?"));
    EXPECT_THAT(failureOf({"help", "piant"}), HasSubstr("no command piant; did you mean paint?"));
}

TEST_F(AProgram, FindsTheCommandThatAMistypedWordMeans) {
    EXPECT_EQ(mistypedCommand(program, "hlep"), "help");
    EXPECT_EQ(mistypedCommand(program, "PAINT"), "paint");
    EXPECT_EQ(mistypedCommand(program, "complation"), "completion");
    for (const char* const word : {"", "paint", "help", "--help", "-help", "wall"})
        EXPECT_EQ(mistypedCommand(program, word), std::nullopt) << word;
}

TEST_F(AProgram, RefusesAnArgumentOfHelpThatIsAnOption) {
    EXPECT_EQ(failureOf({"help", "--"}), "the argument of help cannot begin with -");
    EXPECT_EQ(failureOf({"completion", "--", "bash"}), "the argument of completion cannot begin with -");
}

TEST_F(AProgram, RefusesAnUnknownShell) {
    EXPECT_THAT(failureOf({"completion", "[tcsh]"}), HasSubstr("bash, zsh or fish, not \"[tcsh]\""));
    EXPECT_THAT(failureOf({"completion"}), HasSubstr("needs a SHELL"));
}

TEST_F(AProgram, CompletesInZshAndFish) {
    const std::string zsh = *parseArguments(program, {"completion", "zsh"});
    EXPECT_THAT(zsh, testing::StartsWith("#compdef shop\n"));
    EXPECT_THAT(zsh, HasSubstr("'--quick[Paint once.]'"));
    EXPECT_THAT(zsh, HasSubstr("'1:word:(help completion paint)'"));
    EXPECT_THAT(zsh,
                HasSubstr("'--colour[Colour of the wall, such as that of the neighbour'\\''s wall.]:NAME:_files'"));
    const std::string fish = *parseArguments(program, {"completion", "fish"});
    EXPECT_THAT(fish, HasSubstr("-f -n __fish_use_subcommand -a paint -d 'Paint a wall.'\n"));
    EXPECT_THAT(fish, HasSubstr("-n '__fish_seen_subcommand_from paint' -l quick -d 'Paint once.'\n"));
    EXPECT_THAT(fish, HasSubstr("-n 'not __fish_seen_subcommand_from help completion paint' -s V -l version -d "));
}

// What bash offers for the last of the words.
std::string offeredByBash(const std::string& script, const std::string& words, int last) {
    const TestSupport::TemporaryDirectory directory;
    directory.write("completion", script);
    const std::string command = "bash -c 'source " + directory.file("completion") + "; COMP_WORDS=(" + words +
                                "); COMP_CWORD=" + std::to_string(last) +
                                "; _shop shop \"${COMP_WORDS[COMP_CWORD]}\"; echo \"${COMPREPLY[*]}\"'";
    std::FILE* const output = popen(command.c_str(), "r");
    std::array<char, 1024> buffer{};
    std::string offered;
    while (std::fgets(buffer.data(), buffer.size(), output) != nullptr) offered += buffer.data();
    pclose(output);
    return offered;
}

TEST_F(AProgram, CompletesInBash) {
    const std::string script = *parseArguments(program, {"completion", "bash"});
    EXPECT_EQ(offeredByBash(script, "shop pa", 1), "paint\n");
    EXPECT_EQ(offeredByBash(script, "shop paint --q", 2), "--quick\n");
    EXPECT_EQ(offeredByBash(script, "shop paint --quick --col", 3), "--colour\n");
    EXPECT_EQ(offeredByBash(script, "shop paint wall", 2), "\n");
    EXPECT_EQ(offeredByBash(script, "shop help pa", 2), "paint\n");
    EXPECT_EQ(offeredByBash(script, "shop completion z", 2), "zsh\n");
    EXPECT_EQ(offeredByBash(script, "shop --v", 1), "--version\n");
}

TEST_F(AProgram, CompletesEveryWordInBash) {
    const std::string script = *parseArguments(program, {"completion", "bash"});
    EXPECT_EQ(offeredByBash(script, "shop \"\"", 1), "help completion paint\n");
    EXPECT_EQ(offeredByBash(script, "shop --", 1), "--help --version\n");
    EXPECT_EQ(offeredByBash(script, "shop paint --", 2), "--help --version --colour --quick\n");
    EXPECT_EQ(offeredByBash(script, "shop completion \"\"", 2), "bash zsh fish\n");
    EXPECT_EQ(offeredByBash(script, "shop paint paint -- --quick", 1), "paint\n");
    EXPECT_THAT(script, testing::EndsWith("\ncomplete -o default -F _shop shop\n"));
}

TEST_F(AProgram, OffersItsShellsAndCommandsAsArgumentsInZshAndFish) {
    const std::string zsh = *parseArguments(program, {"completion", "zsh"});
    EXPECT_THAT(zsh, HasSubstr("'1:word:(bash zsh fish)' ;;\n"));
    EXPECT_THAT(zsh, HasSubstr("\nlocal -a commands=(help completion paint)\n"));
    EXPECT_THAT(zsh, HasSubstr("    paint)\n        _arguments \\\n            '--help[Write this help.]' \\\n"));
    EXPECT_THAT(zsh, HasSubstr("'--quick[Paint once.]' \\\n            '*:file:_files' ;;\n"));
    const std::string fish = *parseArguments(program, {"completion", "fish"});
    EXPECT_THAT(fish, HasSubstr("-n '__fish_seen_subcommand_from completion' -f -a 'bash zsh fish'\n"));
    EXPECT_THAT(fish, HasSubstr("-n '__fish_seen_subcommand_from help' -f -a 'help completion paint'\n"));
    EXPECT_THAT(fish, testing::Not(HasSubstr("from paint' -f")));
}

TEST_F(AProgram, QuotesADescriptionForFish) {
    EXPECT_THAT(*parseArguments(program, {"completion", "fish"}),
                HasSubstr(" -l colour -r -d 'Colour of the wall, such as that of the neighbour\\'s wall.'\n"));
}

TEST_F(AProgram, KeepsAMessageInOneLine) {
    EXPECT_THAT(failureOf({"paint", "--colour", "red", "--x\ny\x1B"}), HasSubstr("--x y\\x1B"));
    EXPECT_EQ(failureOf({"help", "wall\n"}), "there is no command wall\\n");
    EXPECT_THAT(failureOf({"completion", "a\nb"}), testing::EndsWith(", not \"a\\nb\""));
    EXPECT_EQ(failureOf({"paint", "--colour", "red", "--" + std::string(1000, 'x')}).size(), 303U);
}

TEST_F(AProgram, SuggestsNoCommandForAnArgumentOrAnEmptyWord) {
    EXPECT_THAT(failureOf({""}), testing::Not(HasSubstr("did you mean")));
    EXPECT_THAT(failureOf({"help", "paint", "hepl"}), "none");
    EXPECT_THAT(failureOf({"completion", "--hlep"}), HasSubstr("did you mean --help?"));
    EXPECT_THAT(failureOf({"--colour"}), testing::Not(HasSubstr("did you mean")));
}

// The names of the program below have a dash, which the name of a shell function cannot have.
class AWorkshop : public testing::Test {
protected:
    AWorkshop() { addProgramOptions(workshop, "work-shop 1.2"); }

    CLI::App& addCut(const std::string& description = "Cut.") { return addCommand(workshop, "cut", description); }
    std::string helpOfCut() { return *parseArguments(workshop, {"help", "cut"}); }
    std::string completion(const std::string& shell) { return *parseArguments(workshop, {"completion", shell}); }

    CLI::App workshop{"Work wood.", "work-shop"};
    std::string text;
    std::vector<std::string> texts;
};

TEST_F(AWorkshop, NamesItsShellFunctionWithoutDashes) {
    EXPECT_THAT(completion("bash"), testing::StartsWith("_work_shop() {\n"));
    EXPECT_THAT(completion("bash"), testing::EndsWith("-F _work_shop work-shop\n"));
    EXPECT_THAT(completion("zsh"), testing::StartsWith("#compdef work-shop\n"));
    EXPECT_THAT(completion("fish"), testing::StartsWith("complete -c work-shop -n "));
}

// zsh ends a description at a bracket, and a message at a colon.
TEST_F(AWorkshop, LeavesOutTheSpecialCharactersOfZsh) {
    addCut().add_option("-t,--tool", text)->type_name("TOOL")->description("Tool [saw: or plane]. [It is sharp.]");
    EXPECT_THAT(completion("zsh"), HasSubstr(" '--tool[Tool saw or plane.]:TOOL:_files' \\\n"));
    EXPECT_THAT(completion("fish"), HasSubstr(" -s t -l tool -r -d 'Tool [saw: or plane].'\n"));
    EXPECT_THAT(completion("zsh"), testing::Not(HasSubstr("'-t")));
}

TEST_F(AWorkshop, OffersTheCommandsOfACommand) {
    CLI::App& cut = addCut();
    cut.add_subcommand("plank");
    cut.add_subcommand("beam");
    EXPECT_THAT(completion("bash"), HasSubstr("arguments='plank beam' ;;\n"));
    EXPECT_THAT(completion("zsh"), HasSubstr("'1:word:(plank beam)' ;;\n"));
    EXPECT_THAT(completion("fish"), HasSubstr("from cut' -f -a 'plank beam'\n"));
}

struct Usage {
    bool isRequired;
    bool isList;
    const char* line;
};

TEST_F(AWorkshop, ShowsWhichArgumentsACommandNeeds) {
    for (const Usage& usage :
         {Usage{false, false, "cut [OPTION...] [BOARD]\n\n"}, Usage{true, false, "cut [OPTION...] BOARD\n\n"},
          Usage{false, true, "cut [OPTION...] [BOARD...]\n\n"}, Usage{true, true, "cut [OPTION...] BOARD...\n\n"}}) {
        CLI::App program("", "shop");
        addProgramOptions(program, "shop 1.2");
        CLI::App& cut = addCommand(program, "cut", "Cut.");
        CLI::Option* const board = usage.isList ? cut.add_option("BOARD", texts) : cut.add_option("BOARD", text);
        board->required(usage.isRequired);
        EXPECT_THAT(*parseArguments(program, {"help", "cut"}),
                    testing::StartsWith(std::string("usage: shop ") + usage.line));
    }
}

TEST_F(AWorkshop, ShowsNoArgumentsOfACommandWithoutAny) {
    addCut();
    EXPECT_THAT(helpOfCut(), testing::StartsWith("usage: work-shop cut [OPTION...]\n\nCut.\n\nOptions:\n"));
}

TEST_F(AWorkshop, ShowsRequiredOptionsWithTheirNames) {
    addCut().add_option("-t,--tool", text)->type_name("TOOL")->required();
    EXPECT_THAT(helpOfCut(), testing::StartsWith("usage: work-shop cut [OPTION...] -t, --tool TOOL\n"));
}

TEST_F(AWorkshop, BreaksTheLinesOfItsHelpAfterEightyColumns) {
    const std::string half(40, 'a');
    const std::string longer(90, 'c');
    addCut(half + " " + std::string(39, 'b') + " " + half + " " + half + " " + longer + " d\n\nNext.");
    EXPECT_THAT(helpOfCut(), HasSubstr("\n\n" + half + " " + std::string(39, 'b') + "\n" + half + "\n" + half + "\n" +
                                       longer + "\nd\n\nNext.\n\nOptions:\n"));
    addCommand(workshop, "saw", longer);
    EXPECT_THAT(*parseArguments(workshop, {"help", "saw"}),
                testing::StartsWith("usage: work-shop saw [OPTION...]\n\n" + longer + "\n\nOptions:\n"));
}

TEST_F(AWorkshop, GivesALongNameALineOfItsOwn) {
    CLI::App& cut = addCut();
    cut.add_flag("--" + std::string(20, 'a'))->description("Short.");
    cut.add_flag("--" + std::string(21, 'b'))->description("Long.");
    addCommand(workshop, std::string(11, 'c'), "Cut.");
    const std::string indent(26, ' ');
    EXPECT_THAT(helpOfCut(), HasSubstr("\n  --" + std::string(20, 'a') + "  Short.\n"));
    EXPECT_THAT(helpOfCut(), HasSubstr("\n  --" + std::string(21, 'b') + "\n" + indent + "Long.\n"));
    EXPECT_THAT(
        *parseArguments(workshop, {"help"}),
        HasSubstr("\n  completion  Write a completion script for a shell: bash, zsh or fish.\n  cut         Cut.\n"
                  "  ccccccccccc\n              Cut.\n"));
}

TEST(ASectionOfAHelp, AlignsItsTexts) {
    EXPECT_EQ(helpSection("Files", {{"epsg", "Definitions."}, {"epsg-axisorder.csv", "Axis orders."}}),
              "\nFiles:\n  epsg                Definitions.\n  epsg-axisorder.csv  Axis orders.\n");
    EXPECT_EQ(helpSection("Files", {{"a", "A."}, {std::string(30, 'b'), "B."}}),
              "\nFiles:\n  a     A.\n  " + std::string(30, 'b') + "\n        B.\n");
    EXPECT_EQ(helpSection("Files", {}), "\nFiles:\n");
}

TEST(ASectionOfAHelp, HasACommentAboveEachExample) {
    EXPECT_EQ(exampleSection({{"count a", "One."}, {"count b", "Two."}}),
              "\nExamples:\n  # One.\n  count a\n  # Two.\n  count b\n");
}

// A program that counts the lines of a file, and has a command "sum".
class AProgramWithAnArgument : public testing::Test {
protected:
    AProgramWithAnArgument() {
        counter.require_subcommand(0, 1);
        addProgramOptions(counter, "count 1.2");
        counter.add_option("FILE", file)->required();
        counter.add_flag("--fast")->description("Count fast.");
        addCommand(counter, "sum", "Sum up.").add_option("NUMBER", numbers);
    }

    std::string failureOf(const std::vector<std::string>& arguments) { return failureIn(counter, arguments); }

    CLI::App counter{"Count lines.", "count"};
    std::string file;
    std::vector<std::string> numbers;
};

TEST_F(AProgramWithAnArgument, ShowsBothUses) {
    EXPECT_THAT(*parseArguments(counter, {"help"}),
                testing::StartsWith("usage: count [OPTION...] FILE\nusage: count COMMAND\n\nCount lines.\n"));
    EXPECT_EQ(parseArguments(counter, {"--help"}), parseArguments(counter, {"help"}));
    EXPECT_THAT(*parseArguments(counter, {"sum", "-h"}),
                testing::StartsWith("usage: count sum [OPTION...] [NUMBER...]\n"));
}

TEST_F(AProgramWithAnArgument, ReadsACommandThatIsTheFirstArgument) {
    EXPECT_EQ(parseArguments(counter, {"sum", "1", "sum", "help"}), std::nullopt);
    EXPECT_EQ(fullName(counter), "count sum");
    EXPECT_EQ(numbers, (std::vector<std::string>{"1", "sum", "help"}));
    EXPECT_EQ(file, "");
}

TEST_F(AProgramWithAnArgument, TakesALaterNameOfACommandForAnArgument) {
    EXPECT_EQ(parseArguments(counter, {"--fast", "sum"}), std::nullopt);
    EXPECT_EQ(fullName(counter), "count");
    EXPECT_EQ(file, "sum");
    EXPECT_THAT(failureOf({"lines", "sum"}), testing::EndsWith("sum; a command is the first argument"));
}

TEST_F(AProgramWithAnArgument, NeedsItUnlessThereIsACommand) {
    EXPECT_THAT(failureOf({}), HasSubstr("FILE is required"));
    EXPECT_THAT(failureOf({"--fast"}), HasSubstr("FILE is required"));
    EXPECT_EQ(failureOf({"sum"}), "none");
}

TEST_F(AProgramWithAnArgument, CompletesFilesBesideCommands) {
    EXPECT_THAT(*parseArguments(counter, {"completion", "bash"}),
                HasSubstr("\ncomplete -o default -o plusdirs -F _count count\n"));
    EXPECT_THAT(*parseArguments(counter, {"completion", "zsh"}),
                HasSubstr("'1:word:{compadd help completion sum; _files}'"));
    EXPECT_THAT(*parseArguments(counter, {"completion", "fish"}),
                HasSubstr("\ncomplete -c count -n __fish_use_subcommand -a sum -d 'Sum up.'\n"));
}

}  // namespace
}  // namespace Tools
