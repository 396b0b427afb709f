#include "tools/projdir/OutputFile.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace ProjDir {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

template <typename Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const OutputError& failure) {
        return failure.what();
    }
    return "";
}

// The system refuses files beyond this size, as it does on a full disk.
class DiskLimit {
public:
    explicit DiskLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    DiskLimit(const DiskLimit&) = delete;
    DiskLimit& operator=(const DiskLimit&) = delete;
    ~DiskLimit() { setrlimit(RLIMIT_FSIZE, &before); }

private:
    rlimit before{};
};

// Rights mean nothing to the superuser, so that tests of them go on as somebody else.
class OrdinaryUser {
public:
    OrdinaryUser() { EXPECT_TRUE(!isSuperuser || seteuid(NOBODY) == 0); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() { EXPECT_TRUE(!isSuperuser || seteuid(0) == 0); }

private:
    static constexpr uid_t NOBODY = 65534;
    bool isSuperuser = geteuid() == 0;
};

TEST(OutputFileTest, AppearsOnlyWhenItIsPublished) {
    const TestSupport::TemporaryDirectory directory;
    OutputFile file(directory.file("epsg"), false);
    file.probe();
    EXPECT_THAT(directory.list(), IsEmpty());
    file.write("text\n");
    EXPECT_FALSE(std::filesystem::exists(directory.file("epsg")));
    file.publish();
    EXPECT_THAT(directory.list(), ElementsAre("epsg"));
    EXPECT_EQ(directory.read("epsg"), "text\n");
}

TEST(OutputFileTest, LeavesNothingUnlessItIsPublished) {
    const TestSupport::TemporaryDirectory directory;
    directory.write("epsg", "old");
    {
        OutputFile file(directory.file("epsg"), true);
        file.write("new");
    }
    EXPECT_THAT(directory.list(), ElementsAre("epsg"));
    EXPECT_EQ(directory.read("epsg"), "old");
}

TEST(OutputFileTest, OverwritesOnlyWhenItMay) {
    const TestSupport::TemporaryDirectory directory;
    const std::string path = directory.write("epsg", "old");
    EXPECT_EQ(failureOf([&] { OutputFile(path, false); }), "\"" + path + "\" is there already; --force overwrites it");
    EXPECT_EQ(directory.read("epsg"), "old");
    OutputFile file(path, true);
    file.write("new");
    file.publish();
    EXPECT_EQ(directory.read("epsg"), "new");
}

TEST(OutputFileTest, WritesTheFileBehindALink) {
    const TestSupport::TemporaryDirectory directory;
    const std::string path = directory.write("real", "old");
    std::filesystem::create_symlink(path, directory.file("link"));
    OutputFile file(directory.file("link"), true);
    file.write("new");
    file.publish();
    EXPECT_EQ(directory.read("real"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(directory.file("link")));
}

TEST(OutputFileTest, RefusesADirectory) {
    const TestSupport::TemporaryDirectory directory;
    EXPECT_THAT(failureOf([&] { OutputFile(directory.name(), true); }), HasSubstr("is a directory"));
}

TEST(OutputFileTest, NamesAFullDisk) {
    const TestSupport::TemporaryDirectory directory;
    directory.write("epsg", "old");
    const std::string text(100000, 'x');
    OutputFile file(directory.file("epsg"), true);
    {
        const DiskLimit limit(5000);
        EXPECT_THAT(failureOf([&] { file.write(text); }),
                    AllOf(HasSubstr("cannot write"), HasSubstr(directory.file("epsg"))));
    }
    EXPECT_EQ(directory.read("epsg"), "old");
}

TEST(OutputFileTest, NamesAFullDevice) {
    OutputFile file("/dev/full", true);
    file.write("text");
    EXPECT_EQ(failureOf([&] { file.publish(); }), "cannot write \"/dev/full\": No space left on device");
}

TEST(OutputFileTest, WritesToADevice) {
    OutputFile file("/dev/null", false);
    file.probe();
    file.write("text");
    file.publish();
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(OutputFileTest, NamesADirectoryThatMustNotBeWrittenTo) {
    const TestSupport::TemporaryDirectory directory;
    chmod(directory.name().c_str(), 0555);
    const OrdinaryUser user;
    const OutputFile file(directory.file("epsg"), false);
    EXPECT_EQ(failureOf([&] { file.probe(); }), "cannot write \"" + directory.file("epsg") + "\": Permission denied");
}

TEST(OutputFileTest, NamesADirectoryThatIsNotThere) {
    const TestSupport::TemporaryDirectory directory;
    const OutputFile file(directory.file("none/epsg"), false);
    EXPECT_THAT(failureOf([&] { file.probe(); }), HasSubstr("No such file or directory"));
}

// In a process of its own: it is to be ended.
TEST(HeldSignalsTest, AreDeliveredWhenTheWorkIsDone) {
    const TestSupport::TemporaryDirectory directory;
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        const pid_t child = fork();
        if (child == 0) {
            {
                const BlockedSignals blocked;
                raise(signal);
                directory.write("done", "");
            }
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal);
        EXPECT_TRUE(std::filesystem::remove(directory.file("done")));
    }
}

TEST(OutputDirectoryTest, IsMadeAndKept) {
    const TestSupport::TemporaryDirectory parent;
    {
        OutputDirectory directory(parent.file("made"));
        EXPECT_EQ(directory.file("epsg"), parent.file("made/epsg"));
        directory.keep();
    }
    EXPECT_TRUE(std::filesystem::is_directory(parent.file("made")));
}

TEST(OutputDirectoryTest, GoesAgainUnlessItIsKept) {
    const TestSupport::TemporaryDirectory parent;
    { const OutputDirectory directory(parent.file("made")); }
    EXPECT_THAT(parent.list(), IsEmpty());
}

TEST(OutputDirectoryTest, StaysWhenItWasThereBefore) {
    const TestSupport::TemporaryDirectory parent;
    { const OutputDirectory directory(parent.name()); }
    EXPECT_TRUE(std::filesystem::is_directory(parent.name()));
}

TEST(OutputDirectoryTest, NamesWhatStandsInItsWay) {
    const TestSupport::TemporaryDirectory parent;
    const std::string path = parent.write("file", "");
    EXPECT_THAT(failureOf([&] { OutputDirectory directory(path); }),
                AllOf(HasSubstr("cannot create directory"), HasSubstr(path)));
}

}  // namespace
}  // namespace ProjDir
