// Several snippet processes write back the sleep-bank cache and the widget
// mirrors while the main app rewrites the same store file: under the lock
// protocol no key anyone wrote is lost, readers never see a torn file, and the
// file stays a readable store in its own format.
#include "ReliabilityTest.h"

#include "metrics/GroupMetrics.h"
#include "platform/store/FilePreferencesStore.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

using namespace velmorant;
using metrics::GroupMetrics;
using platform::Dictionary;
using platform::FilePreferencesStore;
using platform::Value;

constexpr int kSnippetProcesses = 3;
constexpr int kSnippetRounds = 12;
constexpr int kAppRounds = 40;

using velmorant::testing::kMorning;
using velmorant::testing::platformAt;

// Why a child process failed, as its exit status.
enum Failure { kNoRecord = 1 << 0, kWriteFailed = 1 << 1, kReported = 1 << 2 };

// A snippet or widget process: every round reads the records (which must be
// there: a reader never sees half a file) and writes back what the snippet
// path writes, plus a key of its own through the same store.
int snippetProcess(const std::filesystem::path& dir, int id) {
    int failures = 0;
    auto platform = platformAt(kMorning, dir, [&](std::string_view) { failures |= kReported; });
    auto shared = platform->suiteNamed(platform::kAppGroupSuite);
    for (int round = 0; round < kSnippetRounds; ++round) {
        platform->setNow(kMorning.dateByAddingTimeInterval(id * 100 + round));
        GroupMetrics metrics(*platform);
        if (!metrics.requestSleepBank() || !metrics.requestQuality() || !metrics.requestSpO2()) failures |= kNoRecord;
        metrics.requestQualityForSwift();
        if (!shared->setObject(Value(round), "snippet-" + std::to_string(id) + "-" + std::to_string(round)))
            failures |= kWriteFailed;
    }
    return failures;
}

// The main app: read-modify-write of its own dictionaries and keys under the lock.
int appProcess(const std::filesystem::path& file) {
    int failures = 0;
    platform::Diagnostics diagnostics([&](std::string_view) { failures |= kReported; });
    FilePreferencesStore store(file, diagnostics);
    for (int round = 0; round < kAppRounds; ++round) {
        bool ok = store.modify([&](Dictionary& root) {
            const Value* bankValue = root.objectForKey("bankDict");
            Dictionary bank = bankValue && bankValue->dictionary() ? *bankValue->dictionary() : Dictionary();
            const Value* revision = bank.objectForKey("revision");
            bank.setObject(Value((revision ? revision->integerValue() : 0) + 1), "revision");
            root.setObject(Value(bank), "bankDict");

            const Value* trackValue = root.objectForKey("watchTrackDict");
            Dictionary track = trackValue && trackValue->dictionary() ? *trackValue->dictionary() : Dictionary();
            track.setObject(Value(round), "appRound");
            root.setObject(Value(track), "watchTrackDict");

            root.setObject(Value(round), "app-" + std::to_string(round));
        });
        if (!ok) failures |= kWriteFailed;
    }
    return failures;
}

template <typename Body>
pid_t spawn(Body body) {
    pid_t pid = ::fork();
    if (pid == 0) ::_exit(body());
    return pid;
}

class ConcurrentWriters : public velmorant::testing::ReliabilityTest {};

TEST_F(ConcurrentWriters, SnippetWriteBacksAndTheMainAppLoseNothing) {
    const std::filesystem::path file = sharedFile();
    writeDemoStores();
    ASSERT_TRUE(std::filesystem::exists(file));

    std::vector<pid_t> children;
    children.push_back(spawn([&] { return appProcess(file); }));
    for (int id = 0; id < kSnippetProcesses; ++id) children.push_back(spawn([&, id] { return snippetProcess(dir.path(), id); }));
    for (pid_t pid : children) {
        ASSERT_GT(pid, 0);
        int status = 0;
        ASSERT_EQ(::waitpid(pid, &status, 0), pid);
        EXPECT_TRUE(WIFEXITED(status)) << "process " << pid << " ended by signal";
        EXPECT_EQ(WEXITSTATUS(status), 0) << "failures (1 no record, 2 write failed, 4 problem reported)";
    }

    std::string error;
    auto document = platform::parsePlist(fuzz::readFileBytes(file), &error);
    ASSERT_TRUE(document) << error;
    EXPECT_EQ(document->format, platform::PlistFormat::Binary);
    const Dictionary& root = document->root;

    // Every read-modify-write of the app counted, and the demo contents around it are intact.
    const Dictionary* bank = root.objectForKey("bankDict")->dictionary();
    ASSERT_TRUE(bank);
    EXPECT_EQ(bank->objectForKey("revision")->integerValue(), kAppRounds);
    EXPECT_TRUE(bank->objectForKey("spO2Dict") && bank->objectForKey("spO2Dict")->dictionary());
    const Dictionary* track = root.objectForKey("watchTrackDict")->dictionary();
    ASSERT_TRUE(track);
    EXPECT_EQ(track->objectForKey("appRound")->integerValue(), kAppRounds - 1);
    EXPECT_TRUE(track->objectForKey("rawSynchTime")->date());
    EXPECT_TRUE(root.objectForKey("velmorantConfig")->dictionary());

    std::vector<std::string> missing;
    for (int round = 0; round < kAppRounds; ++round)
        if (!root.contains("app-" + std::to_string(round))) missing.push_back("app-" + std::to_string(round));
    for (int id = 0; id < kSnippetProcesses; ++id)
        for (int round = 0; round < kSnippetRounds; ++round) {
            const std::string key = "snippet-" + std::to_string(id) + "-" + std::to_string(round);
            if (!root.contains(key)) missing.push_back(key);
        }
    for (const char* key : {"cachedSleepBank", "cachedSleepBankUpdate", "Swift-HasData", "Swift-ringSleepLabel",
                            "Swift-ringQualityLabel", "Swift-ringDeepLabel", "Swift-ringBPMLabel"})
        if (!root.contains(key)) missing.push_back(key);
    EXPECT_TRUE(missing.empty()) << missing.size() << " keys lost, first " << missing.front();

    EXPECT_EQ(*root.objectForKey("Swift-HasData")->string(), "1");
    EXPECT_TRUE(root.objectForKey("cachedSleepBank")->dictionary()->contains("latestBedTime"));
    EXPECT_TRUE(reports.empty()) << reports.front();

    // Nothing is left behind but the store and its lock.
    EXPECT_EQ(folderContents(), (std::vector<std::string>{"group.brumelkai.Velmorant.plist", "group.brumelkai.Velmorant.plist.lock",
                                               "standard.plist", "standard.plist.lock"}));
}

}  // namespace
