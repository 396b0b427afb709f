#include "tools/crsctl/Output.h"

#include <fcntl.h>
#include <optional>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"
#include "tools/crsctl/Session.h"

namespace crsctl {
namespace {

TEST(AJsonText, MarksObjectsWithReplacedBytes) {
    EXPECT_EQ(serialisedInLine({{"a", "\xFF\n"}}), "{\"a\":\"\xEF\xBF\xBD\\n\",\"bytesReplaced\":true}");
    EXPECT_EQ(serialised(Json{{"b", 1}, {"a", 2}}), "{\n  \"b\": 1,\n  \"a\": 2\n}\n");
    EXPECT_EQ(serialised(Json::array({{{"a", "\xC3\xBC"}}, {{"a", {{"b", "\xFC"}}}}})),
              "[\n  {\n    \"a\": \"\xC3\xBC\"\n  },\n  {\n    \"a\": {\n      \"b\": \"\xEF\xBF\xBD\"\n    },\n"
              "    \"bytesReplaced\": true\n  }\n]\n");
}

TEST(AJsonText, ReplacesBytesThatAreNotUtf8) {
    bool replaced = false;
    EXPECT_EQ(quotedJson("a\"b", replaced), "\"a\\\"b\"");
    EXPECT_FALSE(replaced);
    EXPECT_EQ(quotedJson("\xFF", replaced), "\"\xEF\xBF\xBD\"");
    EXPECT_TRUE(replaced);
}

TEST(AJsonText, ReplacesNothingInAnEmptyText) {
    bool replaced = false;
    EXPECT_EQ(quotedJson("", replaced), "\"\"");
    EXPECT_EQ(quotedJson("\xC3\xBC\t", replaced), "\"\xC3\xBC\\t\"");
    EXPECT_FALSE(replaced);
    EXPECT_EQ(serialised(Json::array()), "[]\n");
    EXPECT_EQ(serialisedInLine({{"b", 1}, {"a", "\xC3\xBC"}}), "{\"b\":1,\"a\":\"\xC3\xBC\"}");
}

TEST(AJsonText, HasNullForWhatIsMissing) {
    EXPECT_TRUE(orNull(0U).is_null());
    EXPECT_TRUE(orNull(std::string()).is_null());
    EXPECT_TRUE(orNull(std::optional<double>()).is_null());
    EXPECT_EQ(orNull(1U), 1U);
    EXPECT_EQ(orNull(std::string("a")), "a");
    EXPECT_EQ(orNull(std::optional<double>(0)), 0);
    EXPECT_EQ(orNull(std::optional<bool>(false)), false);
}

// Sends what is written to a descriptor into a file for as long as it lives.
class Redirection {
public:
    Redirection(int redirected, const std::string& path) : descriptor(redirected), original(dup(redirected)) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        dup2(file, descriptor);
        close(file);
    }
    ~Redirection() {
        dup2(original, descriptor);
        close(original);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    const int descriptor;
    const int original;
};

class AReportedResult : public testing::Test {
protected:
    // Returns the exit code of the program.
    int reported(const CommandResult& result) const { return reportedTo(directory.file("output"), result); }

    int reportedTo(const std::string& path, const CommandResult& result) const {
        const Redirection output(STDOUT_FILENO, path);
        const Redirection errors(STDERR_FILENO, directory.file("errors"));
        return report("crsctl names", result);
    }

    std::string output() const { return directory.read("output"); }
    std::string errors() const { return directory.read("errors"); }

    const TestSupport::TemporaryDirectory directory;
};

TEST_F(AReportedResult, IsWrittenWithItsNotesAndItsExitCode) {
    EXPECT_EQ(reported({"a\nb\n", EXIT_REFUSED, {"one", "two"}}), 1);
    EXPECT_EQ(output(), "a\nb\n");
    EXPECT_EQ(errors(), "crsctl names: one\ncrsctl names: two\n");
}

TEST_F(AReportedResult, MayBeEmpty) {
    EXPECT_EQ(reported({"", EXIT_DONE, {}}), 0);
    EXPECT_EQ(output() + errors(), "");
}

TEST_F(AReportedResult, FailsIfTheOutputIsFull) {
    try {
        reportedTo("/dev/full", {"text", EXIT_DONE, {"note"}});
        FAIL() << "written";
    } catch (const SetUpError& failure) {
        EXPECT_STREQ(failure.what(), "standard output: No space left on device");
        EXPECT_EQ(failure.getExitCode(), 2);
    }
    EXPECT_EQ(errors(), "");
}
}  // namespace
}  // namespace crsctl
