// Stores that cannot be written: the failure is reported with the file and
// the reason, the file is left exactly as it was, and the snippet path still
// gets its records.
#include "ReliabilityTest.h"

#include "metrics/GroupMetrics.h"
#include "platform/store/FilePreferencesStore.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace velmorant;
using metrics::GroupMetrics;
using platform::Dictionary;
using platform::Value;
using fuzz::readFileBytes;
using velmorant::testing::kMorning;
using velmorant::testing::platformAt;

struct WriteFailure {
    const char* name;
    // Run in the process that then writes: makes the shared store unwritable.
    std::function<void(const std::filesystem::path& file)> prevent;
    const char* reported;  // part of the report
};

// A write that cannot be made is reported, changes nothing on disk, leaves no
// stray file, and the request that made it still returns its record. Each case
// runs in its own process, so a file-size limit stays there.
class StoreWriteFailure : public velmorant::testing::ReliabilityTest {};

TEST_F(StoreWriteFailure, IsReportedAndLosesNothing) {
    const WriteFailure cases[] = {
        {"read-only file", [](const std::filesystem::path& file) { ::chmod(file.c_str(), 0444); }, "read-only"},
        {"full disk",
         [](const std::filesystem::path&) {
             // Writing past the limit fails with EFBIG, as on a full disk, once SIGXFSZ no longer kills.
             ::signal(SIGXFSZ, SIG_IGN);
             struct rlimit limit {512, 512};
             ::setrlimit(RLIMIT_FSIZE, &limit);
         },
         "File too large"},
        {"lock that cannot be opened",
         [](const std::filesystem::path& file) { std::filesystem::create_directory(file.string() + ".lock"); },
         "cannot take the lock"},
    };
    for (const WriteFailure& c : cases) {
        SCOPED_TRACE(c.name);
        // Each case starts from the demo stores as files, without the lock file.
        for (const auto& entry : std::filesystem::directory_iterator(dir.path())) std::filesystem::remove_all(entry.path());
        const std::filesystem::path file = sharedFile();
        writeDemoStores();
        const auto before = readFileBytes(file);
        ASSERT_GT(before.size(), 512u);
        std::filesystem::remove(file.string() + ".lock");
        const auto filesBefore = folderContents();

        int pipeFds[2];
        ASSERT_EQ(::pipe(pipeFds), 0);
        pid_t pid = ::fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            ::close(pipeFds[0]);
            c.prevent(file);
            std::string told;
            auto platform = platformAt(kMorning, dir.path(), [&](std::string_view m) { told.append(m).append("\n"); });
            GroupMetrics metrics(*platform);
            int failures = 0;
            if (!metrics.requestSleepBank()) failures |= 1;  // its record, though the cache is not written
            if (platform->suiteNamed(platform::kAppGroupSuite)->setObject(Value("x"), "Swift-HasData")) failures |= 2;
            [[maybe_unused]] auto n = ::write(pipeFds[1], told.data(), told.size());
            ::_exit(failures);
        }
        ::close(pipeFds[1]);
        std::string told;
        char buffer[4096];
        for (ssize_t n; (n = ::read(pipeFds[0], buffer, sizeof buffer)) > 0;) told.append(buffer, static_cast<std::size_t>(n));
        ::close(pipeFds[0]);
        int status = 0;
        ::waitpid(pid, &status, 0);
        ASSERT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0) << "1: no record, 2: the write claimed success";

        EXPECT_NE(told.find(file.string()), std::string::npos) << told;
        EXPECT_NE(told.find(c.reported), std::string::npos) << told;
        EXPECT_EQ(readFileBytes(file), before);
        auto filesAfter = folderContents();
        std::erase(filesAfter, "group.brumelkai.Velmorant.plist.lock");
        auto expected = filesBefore;
        std::erase(expected, "group.brumelkai.Velmorant.plist.lock");
        EXPECT_EQ(filesAfter, expected);
    }
}

}  // namespace
