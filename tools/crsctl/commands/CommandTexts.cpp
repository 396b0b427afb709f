#include "tools/crsctl/commands/CommandTexts.h"

namespace crsctl {
namespace {

CommandText programText() {
    return {
        "",
        "COMMAND",
        "ask the library what a server would do",
        {"crsctl answers an operator's questions about the coordinate reference systems (CRS) of a server: what a "
         "CRS name means, where a point goes, whether a configuration starts, which names it answers.",
         "resolve NAME... says what the server makes of names. transform moves a stream of points or boxes from one "
         "CRS to another. check FILE reads a configuration as the server would and says what is wrong with it. names "
         "lists every name that a configuration answers. find TEXT... looks for a CRS by words, code and place."},
        {{"--man", "COMMAND", "Write the manual page of a command, of the program for \"crsctl\"."}},
        {{"crsctl resolve urn:ogc:def:crs:EPSG::25832", "What is this CRS?"},
         {"crsctl transform --from CRS:84 --to UTM32 --config crs.xml points.txt", "Where are these points?"},
         {"crsctl check crs.xml", "Would a server start with this configuration?"},
         {"crsctl names --config crs.xml", "Under which names does it offer its CRS?"},
         {"crsctl find utm germany", "Which CRS might be meant?"}}};
}

CommandText resolveText() {
    return {"resolve",
            "NAME...",
            "say what a server makes of CRS names",
            {"For each name: which spelling it is, the EPSG codes, dataset version, alias, dimension, axis order and "
             "unit of the CRS, whether the server offers it, and how it is written back in each form.",
             "For a refused name: the service exception code and the text that a client would get, the nearest "
             "reason, and, where one small change of the name would make it work, that change.",
             "If the PROJ directory has descriptions of its CRS: name, area of use, datum, unit, where the shift to "
             "WGS 84 comes from, its accuracy as the registry states it, and how far it leads away from PROJ's best "
             "operation.",
             "Without --config every CRS of the PROJ directory is answered, and nothing is said about what is "
             "offered. CRS:84 and its URN and URL are answered as well."},
            {},
            {{"crsctl resolve EPSG:25832", "What is known about a code."},
             {"crsctl resolve --config crs.xml UTM32 epsg:4326", "An alias of the configuration; a name that fails."},
             {"crsctl resolve --json urn:ogc:def:crs:EPSG::4326", "The same for a program."}}};
}

constexpr char LINES[] =
    "Reads points, one a line, from the files or from standard input (also \"-\"), and writes them in the "
    "other CRS. A line holds x, y and, if there is one, a height z; any further columns are carried through. "
    "Columns are separated by blanks, commas or semicolons: by what follows the first column. x is the first "
    "axis of the CRS: the latitude where its axis order is latitude, longitude.";

constexpr char REFUSALS[] =
    "Blank lines and comments are passed over; text output keeps them. A line that cannot be read or "
    "transformed is reported on standard error with its number, the reason and the input, and the lines "
    "behind it are transformed all the same, unless --errors says otherwise. The last line on standard "
    "error gives counts, seconds and rate.";

constexpr char FORMATS[] =
    "Text output is the line as it stands with its coordinates replaced, and is what cs2cs writes at the "
    "same number of decimals. CSV and JSON output leave out blank lines and comments.";

constexpr char BOXES[] =
    "With --bounds a line holds a box: minx, miny, maxx and maxy. Boxes may also be arguments, four numbers "
    "each, instead of files. The result is the box around the edges in the other CRS, and around a pole inside. A "
    "geographic box that crosses the antimeridian has its least longitude greater than its greatest. A box fails "
    "if no point of it can be transformed; otherwise the result is the box around the part that can.";

constexpr char STREAMS[] =
    "Memory does not grow with the input. Input that is not a file is answered line by line as it arrives. "
    "Several threads share the work; the output is in the order of the input.";

CommandText transformText() {
    return {
        "transform",
        "--from NAME --to NAME [--bounds] [FILE...]",
        "transform a stream of points or boxes",
        {LINES, REFUSALS, FORMATS, BOXES, STREAMS},
        {{"--from", "NAME", "CRS of the input, in any spelling that the server accepts."},
         {"--to", "NAME", "CRS of the output."},
         {"--inverse", "", "Exchange the two."},
         {"--columns", "LIST",
          "What stands in the columns, from the left: x, y and z, and any other word for a column that is carried "
          "through. Without it x, y and, where it is a number, z. Columns beyond the list are carried through."},
         {"--separator", "KIND", "auto, space, comma or semicolon."},
         {"--header", "", "The first line of each file holds column names: no point, but names for CSV and JSON."},
         {"--comment", "TEXT", "What begins a comment line; \"#\" by default, nothing for an empty text."},
         {"--output", "FORMAT", "text, csv or json (one object a line)."},
         {"--decimals", "N",
          "Decimal places of every coordinate, 0 to 18. Without it those of the configured entry, else 8 for "
          "degrees and 3 for metres; a height above a geographic CRS has 3."},
         {"--errors", "MODE",
          "What to do at a line that fails: mark it in the output with \"*\" (the default), skip it, or stop."},
         {"--bounds", "", "Lines hold boxes; --columns names minx, miny, maxx and maxy."},
         {"--points-per-edge", "N",
          "Points on each edge of a box, between its corners, that are transformed: 0 to 10000, by default 21."},
         {"--jobs", "N", "Threads that transform; by default one for each processor, at most 8."}},
        {{"crsctl transform --from EPSG:4326 --to EPSG:25832 points.txt", "Latitude and longitude to UTM."},
         {"crsctl transform --from EPSG:4326 --to EPSG:25832 --inverse", "Back, from standard input."},
         {"crsctl transform --from EPSG:31467 --to EPSG:25832 --header --columns id,x,y --output csv towers.csv",
          "A table whose first column is an identifier."},
         {"crsctl transform --from EPSG:4326 --to EPSG:3857 --errors stop --json < points.txt",
          "JSON lines, up to the first line that fails."},
         {"crsctl transform --from EPSG:4326 --to EPSG:25832 --bounds 47 6 55 15", "The box around an area in UTM."}}};
}

CommandText checkText() {
    return {"check",
            "FILE",
            "say whether a server would start with a configuration",
            {"Reads a CRS configuration fragment as the server would, prints a table of its entries, then everything "
             "that is wrong or suspicious, each with its line: what the start would fail for, entries that are "
             "dropped as duplicates, containers, elements and attributes that are ignored, attribute values that do "
             "not convert, an axis order without an alias, names that are claimed twice, blanks around a code.",
             "Each CRS is held to what is expected of it: a shift to WGS 84, its accuracy (--accuracy) and its area of "
             "use (--area). Accuracies and areas are those of the descriptions in the PROJ directory.",
             "The files of the PROJ directory are looked through as well: a last line of epsg-axisorder.csv that is "
             "not read because its line end is missing, codes with two axis orders or two definitions, grid files "
             "that are missing, parameters that are no numbers.",
             "The exit code is 0 only when a server would start and nothing is an error."},
            {{"--area", "W,S,E,N", "Warn of CRS whose area of use does not cover this box, in degrees."},
             {"--accuracy", "METRES", "Warn of CRS whose shift is less accurate; 10 by default."}},
            {{"crsctl check crs.xml", "Before a configuration goes into production."},
             {"crsctl check --area 6,47,15,55 --accuracy 2 crs.xml", "For data of Germany, within 2 m."},
             {"crsctl check --json crs.xml", "The same for a program."}}};
}

CommandText namesText() {
    return {"names",
            "[--config FILE]",
            "list every name that a configuration answers, by CRS",
            {"Asks the name cache, as it stands after a start with the configuration, for every spelling that it "
             "answers: codes, identifiers, URNs, text forms and aliases, each with the axis order of the answer. "
             "Other spellings of these CRS are understood as well, but are taken apart on request. Without a "
             "configuration there are none."},
            {},
            {{"crsctl names --config crs.xml", "Everything that may stand in a request."},
             {"crsctl names --config crs.xml --json", "The same for a program."}}};
}

CommandText findText() {
    return {
        "find",
        "TEXT...",
        "look for a CRS by words, code and place",
        {"Lists the CRS of the PROJ directory that have every word in their name, area of use, datum or code, best "
         "first: the CRS of the code, one with this very name, those with the words in their names, those with "
         "words in their areas; deprecated ones last. Words may be cut short at their ends: \"32\" and \"germ\" "
         "are found in \"zone 32N\" and \"Germany\".",
         "With --area only CRS whose area of use meets the box are listed: those that cover it first, and among "
         "them those with the smallest area. \"(in part)\" marks the others.",
         "With --config only what the server offers is listed. The PROJ directory must have descriptions of its CRS "
         "(\"epsg-info.csv\")."},
        {{"--area", "W,S,E,N",
          "A box of longitudes and latitudes in degrees; W is greater than E across the "
          "antimeridian."},
         {"--kind", "KIND", "Only CRS of this kind: geographic, geocentric, projected or compound."}},
        {{"crsctl find utm 32 etrs89", "By words."},
         {"crsctl find --area 9.7,53.4,10.3,53.7 --kind projected", "What is made for a place."},
         {"crsctl find --json ED50", "The same for a program."}}};
}

}  // namespace

const std::vector<CommandText>& commandTexts() {
    static const std::vector<CommandText> texts = {programText(), resolveText(), transformText(),
                                                   checkText(),   namesText(),   findText()};
    return texts;
}

const CommandText* findCommandText(const std::string& name) {
    for (const CommandText& text : commandTexts())
        if (text.name == name) return &text;
    return nullptr;
}

std::string fullNameOf(const CommandText& command) {
    return command.name.empty() ? "crsctl" : "crsctl " + command.name;
}

const std::vector<OptionText>& commonOptionTexts() {
    static const std::vector<OptionText> texts = {
        {"--config", "FILE", "The server's CRS configuration (\"-\": standard input)."},
        {"--proj-dir", "DIR",
         "Directory with \"epsg\", \"epsg-axisorder.csv\" and, if it has that, \"epsg-info.csv\". Without it the "
         "environment variable "
         "QUARVELSRV_PROJ4_CONF_DIR, else /opt/quarvelserver/share/proj4 if it is there, else the directory installed "
         "with the library."},
        {"--json", "", "Write JSON."},
        {"-h,--help", "", "Write this help."},
        {"--version", "", "Write the version."}};
    return texts;
}

const std::vector<ExitText>& exitTexts() {
    static const std::vector<ExitText> texts = {
        {"0", "Everything was accepted."},
        {"1", "A name, a line or a configuration was refused; the output was closed or the program was told to end."},
        {"2", "Wrong usage, a file that cannot be read or written, or a library that does not start."},
        {"130", "Interrupted."}};
    return texts;
}

}  // namespace crsctl
