#include "platform/store/FilePreferencesStore.h"

#include "TempDir.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <vector>

using namespace velmorant::platform;

namespace {

std::string fileText(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

struct StoreTest : ::testing::Test {
    TempDir dir;
    std::vector<std::string> reports;
    Diagnostics diagnostics{[this](std::string_view m) { reports.emplace_back(m); }};
    std::filesystem::path file() const { return dir.path() / "group.brumelkai.Velmorant.plist"; }
};

TEST_F(StoreTest, AbsentFileReadsEmptyAndIsCreatedPrivatelyOnFirstWrite) {
    FilePreferencesStore store(file(), diagnostics);
    EXPECT_TRUE(store.objectForKey("bankDict").isNone());
    ASSERT_TRUE(store.setObject(Value(3.5), "requiredHours"));
    struct stat st {};
    ASSERT_EQ(::stat(file().c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    EXPECT_EQ(fileText(file()).rfind("bplist00", 0), 0u);
    EXPECT_TRUE(reports.empty());
}

TEST_F(StoreTest, SeesAnotherWritersChangesAndKeepsTheirKeys) {
    FilePreferencesStore mine(file(), diagnostics), app(file(), diagnostics);
    ASSERT_TRUE(mine.setObject(Value("mine"), "a"));
    EXPECT_EQ(*app.objectForKey("a").string(), "mine");
    ASSERT_TRUE(app.setObject(Value("app"), "b"));
    ASSERT_TRUE(mine.setObject(Value(), "a"));  // none removes
    EXPECT_TRUE(mine.objectForKey("a").isNone());
    EXPECT_EQ(*mine.objectForKey("b").string(), "app");
}

TEST_F(StoreTest, KeepsFormatAndPermissionsOfAnExistingFile) {
    std::string error;
    auto xml = serialisePlist(Dictionary{{"x", 1}}, PlistFormat::Xml, &error);
    std::ofstream(file(), std::ios::binary).write(reinterpret_cast<const char*>(xml->data()), xml->size());
    ::chmod(file().c_str(), 0640);
    FilePreferencesStore store(file(), diagnostics);
    ASSERT_TRUE(store.setObject(Value(2), "y"));
    EXPECT_NE(fileText(file()).find("<plist"), std::string::npos);
    struct stat st {};
    ::stat(file().c_str(), &st);
    EXPECT_EQ(st.st_mode & 0777, 0640u);
    EXPECT_EQ(store.objectForKey("x").integerValue(), 1);
}

// Something other than a file in the store's place (a FIFO would block a
// reader that opens it by name) is reported and left alone, without waiting.
TEST_F(StoreTest, SomethingOtherThanAFileIsRefusedWithoutWaiting) {
    ASSERT_EQ(::mkfifo(file().c_str(), 0644), 0);
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        ::alarm(10);
        FilePreferencesStore store(file(), diagnostics);
        const bool refused = store.dictionaryRepresentation().empty() && !store.setObject(Value(1), "a") &&
                             reports.size() == 1 && reports[0].find("not a regular file") != std::string::npos;
        ::_exit(refused ? 0 : 1);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
    struct stat st {};
    ASSERT_EQ(::lstat(file().c_str(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
}

}  // namespace
