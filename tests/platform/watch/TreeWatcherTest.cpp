#include "platform/linux/watch/TreeWatcher.h"

#include <gtest/gtest.h>

#include "tests/platform/watch/FakeDisk.h"
#include "tests/platform/watch/Told.h"

// What cannot be provoked at will on a real kernel, on a disk and with a clock of the test's own.

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Tellings = std::vector<std::string>;

class TreeWatcherTest : public testing::Test {
protected:
    TreeWatcherTest() {
        for (const char* path : {"/w", "/w/d", "/w/d/e"}) disk.makeDirectory(path);
        for (const char* path : {"/w/a.txt", "/w/d/n.txt"}) write(path);
        disk.takeBlock();
        disk.time += seconds(5); // so that nobody takes them for just made
    }

    void write(const std::string& path) {
        if (!disk.exists(path)) disk.createFile(path);
        disk.writeFile(path);
        disk.closeFile(path);
    }

    void start() {
        watcher.setRoots({"/w"});
        passOn();
        toldWithin(seconds(1));
    }

    void passOn() {
        watcher.handleBlock(disk.takeBlock(), disk.time);
        watcher.crawl(seconds(1));
    }

    Tellings toldWithin(std::chrono::nanoseconds time) {
        Tellings result;
        const WatchTime end = disk.time + time;
        while (watcher.nextDeadline() && *watcher.nextDeadline() <= end) {
            disk.time = std::max(disk.time, *watcher.nextDeadline());
            const Tellings now = told(watcher.advance());
            result.insert(result.end(), now.begin(), now.end());
            watcher.crawl(seconds(1));
        }
        disk.time = end;
        return result;
    }

    Tellings toldAfter() {
        passOn();
        return toldWithin(seconds(1));
    }

    FakeDisk disk;
    TreeWatcher watcher{disk};
};

TEST_F(TreeWatcherTest, GoesFarDownWithoutStartingFromTheTopEachTime) {
    disk.pathLimit = 20;
    std::string path = "/w/d/e";
    for (int depth = 0; depth < 100; ++depth) disk.makeDirectory(path += "/f");
    disk.takeBlock();
    start();
    EXPECT_TRUE(disk.isWatched(path));
    EXPECT_LT(disk.openingsByPath, 20U);
    disk.createFile(path + "/new");
    disk.closeFile(path + "/new");
    EXPECT_EQ(toldAfter(), Tellings{"created " + path + "/new"});
}

TEST_F(TreeWatcherTest, LooksOnceForSeveralLosses) {
    start();
    const std::size_t before = disk.listings;
    disk.loseBlock();
    const std::string lost = disk.takeBlock();
    watcher.handleBlock(lost + lost + lost, disk.time);
    passOn();
    EXPECT_LE(disk.listings - before, 6U); // three folders, now and once more for what was lost on the way
}

TEST_F(TreeWatcherTest, SaysWhereToLookThoughWhatIsBackHasNewAttributes) {
    watcher.setInterest({.documentPaths = {"/w/a.txt"}});
    start();
    disk.move("/w/a.txt", "/w/b.txt");
    disk.move("/w/b.txt", "/w/a.txt");
    disk.changeAttributes("/w/a.txt");
    EXPECT_EQ(toldAfter(), (Tellings{"attributes /w/a.txt", "look /w"}));
}

TEST_F(TreeWatcherTest, SaysNothingOfADirectoryInWhichAnotherStands) {
    start();
    write("/w/d/n.txt");
    watcher.handleBlock(disk.takeBlock(), disk.time);
    disk.move("/w/d", "/w/r"); // known to the disk, but not yet to the watcher
    disk.makeDirectory("/w/d");
    EXPECT_EQ(toldWithin(milliseconds(8)), Tellings{});
    EXPECT_EQ(toldAfter(),
              (Tellings{"removed dir /w/d", "created dir /w/d", "created dir /w/r", "modified /w/r/n.txt"}));
}

TEST_F(TreeWatcherTest, RecognisesANewRootByTheLostWatch) {
    start();
    disk.remove("/w");
    disk.makeDirectory("/w"); // gets the number of the old one
    write("/w/f");
    EXPECT_EQ(toldAfter(), Tellings{"rootChanged /w"});
    write("/w/f");
    EXPECT_EQ(toldAfter(), Tellings{"modified /w/f"});
}

TEST_F(TreeWatcherTest, TellsThatTheRootCameBack) {
    start();
    disk.remove("/w");
    EXPECT_EQ(toldAfter(), Tellings{"rootChanged /w"});
    disk.loseBlock();
    passOn(); // there is nothing to compare
    disk.makeDirectory("/w");
    EXPECT_EQ(toldWithin(seconds(6)), Tellings{"rootChanged /w"});
    disk.makeDirectory("/w/n");
    disk.loseBlock();
    EXPECT_EQ(toldAfter(), Tellings{"created dir /w/n"});
    disk.remove("/w");
    disk.makeDirectory("/w"); // gets the number of the old one
    disk.loseBlock();
    EXPECT_EQ(toldAfter(), Tellings{"rootChanged /w"});
}

TEST_F(TreeWatcherTest, TellsOfTheRootAgainWhenItGoesInTheMomentInWhichItIsTold) {
    disk.beforeNextWatch = [&] { disk.remove("/w"); };
    start();
    EXPECT_EQ(disk.watchCount(), 0U);
    disk.makeDirectory("/w");
    disk.beforeNextWatch = [&] { disk.remove("/w"); };
    EXPECT_EQ(toldWithin(seconds(6)), Tellings{"rootChanged /w"}); // whoever looks may find it
    EXPECT_EQ(toldWithin(seconds(6)), Tellings{"rootChanged /w"});
    EXPECT_EQ(toldWithin(seconds(6)), Tellings{});
    disk.makeDirectory("/w");
    EXPECT_EQ(toldWithin(seconds(6)), Tellings{"rootChanged /w"});
    EXPECT_TRUE(disk.isWatched("/w"));
}

TEST_F(TreeWatcherTest, TellsOfARootThatWasAwayWhenTheRootsWereGivenAgain) {
    start();
    disk.move("/w", "/away");
    watcher.setRoots({"/w"});
    disk.move("/away", "/w");
    EXPECT_EQ(toldAfter(), Tellings{"rootChanged /w"});
}

TEST_F(TreeWatcherTest, KeepsARootWhoseOuterRootIsGivenUp) {
    watcher.setInterest({.directoryPaths = {"/w/d/e"}});
    start();
    watcher.setRoots({"/w", "/w/d"});
    disk.makeDirectory("/w/d/e/f");
    disk.loseBlock();
    watcher.handleBlock(disk.takeBlock(), disk.time);
    watcher.setRoots({"/w/d"}); // before anything was compared
    EXPECT_EQ(toldAfter(), (Tellings{"created dir /w/d/e/f", "look /w/d/e"}));

    watcher.setRoots({"/w", "/w/d"});
    passOn();
    disk.move("/w/d", "/w/r");
    watcher.handleBlock(disk.takeBlock(), disk.time);
    watcher.setRoots({"/w/d"}); // the folder is not there any more
    EXPECT_EQ(toldAfter(), (Tellings{"rootChanged /w/d", "look /w/d/e"}));
    disk.move("/w/r", "/w/d");
    EXPECT_EQ(toldWithin(seconds(6)), (Tellings{"rootChanged /w/d", "look /w/d/e"}));
    EXPECT_TRUE(disk.isWatched("/w/d/e/f"));
}

TEST_F(TreeWatcherTest, WatchesAllOfARootWithinOneThatWasLimited) {
    for (int i = 0; i < 1000; ++i) disk.makeDirectory("/w/d/" + std::to_string(i));
    disk.makeDirectory("/w/d/e/f");
    disk.takeBlock();
    watcher.setInterest({.documentRootPaths = {"/w"}});
    start();
    EXPECT_FALSE(disk.isWatched("/w/d/e/f"));
    watcher.setRoots({"/w", "/w/d"});
    passOn();
    EXPECT_TRUE(disk.isWatched("/w/d/e/f"));
}

TEST_F(TreeWatcherTest, ForgetsARootThatGoesFromTheRootAroundIt) {
    start();
    watcher.setRoots({"/w", "/w/d"});
    disk.makeDirectory("/out");
    disk.move("/w/d", "/out/d");
    EXPECT_EQ(toldAfter(), (Tellings{"rootChanged /w/d", "removed dir /w/d"}));
    disk.move("/out/d", "/w/d");
    EXPECT_EQ(toldAfter(), (Tellings{"rootChanged /w/d", "created dir /w/d"}));
    EXPECT_EQ(watcher.statistics().folders, 3U);
    EXPECT_EQ(disk.watchCount(), 3U);
}

TEST_F(TreeWatcherTest, LooksOnceAtWhatItBeginsToWatch) {
    watcher.setInterest({.documentRootPaths = {"/w"}});
    start();
    watcher.setInterest({.directoryPaths = {"/w/d"}, .documentPaths = {"/w/d/e/x"}});
    EXPECT_EQ(toldWithin(seconds(1)), Tellings{}); // it was all under watch
    disk.makeDirectory("/v");
    watcher.setRoots({"/v", "/w"});
    watcher.setInterest({.directoryPaths = {"/v"}});
    disk.beforeNextWatch = [&] { write("/v/f"); };
    EXPECT_EQ(toldWithin(seconds(1)), Tellings{});
    watcher.setInterest({.directoryPaths = {"/v/gone"}}); // was there a moment ago
    EXPECT_EQ(toldWithin(seconds(1)), Tellings{"look /v/gone"});
}

TEST_F(TreeWatcherTest, FindsWhatIsOfInterestWhateverTheRootsAroundIt) {
    disk.makeDirectory("/w/d-x");
    for (const std::vector<std::string>& roots :
         {Tellings{"/"}, Tellings{"/w", "/w/d"}, Tellings{"/w", "/w/d", "/w/d/e"}, Tellings{"/w/d", "/w/d-x"}}) {
        watcher.setInterest({});
        start();
        watcher.setRoots(roots);
        toldAfter();
        watcher.setInterest({.directoryPaths = {"/w/d/e"}});
        EXPECT_EQ(toldAfter(), Tellings{}) << testing::PrintToString(roots); // it is under watch
    }
}

TEST_F(TreeWatcherTest, SendsWhoeverListedInBetweenToLookAgain) {
    watcher.setInterest({.directoryPaths = {"/w"}, .documentPaths = {"/w/d/n.txt", "/w/r/e/f"}});
    start();
    write("/w/probe");
    disk.remove("/w/probe");
    EXPECT_EQ(toldAfter(), Tellings{"look /w"});
    disk.move("/w/d", "/w/r");
    disk.move("/w/r", "/w/d");
    EXPECT_EQ(toldAfter(), (Tellings{"look /w", "look /w/d", "look /w/r/e"}));
}

TEST_F(TreeWatcherTest, TakesNothingFromAFolderThatIsNotItsParent) {
    for (const char* path : {"/w/o", "/w/o/x", "/out", "/out/m", "/out/m/x"}) disk.makeDirectory(path);
    disk.takeBlock();
    start();
    disk.move("/out/m", "/w/m");
    watcher.handleBlock(disk.takeBlock(), disk.time);
    disk.move("/w/m", "/w/k");
    watcher.handleBlock(disk.takeBlock(), disk.time);
    disk.move("/w/k", "/w/m"); // before anybody has looked into x
    disk.move("/w/o", "/w/k");
    watcher.crawl(seconds(1));
    toldAfter();
    EXPECT_TRUE(disk.isWatched("/w/m/x"));
}

TEST_F(TreeWatcherTest, NamesFoldersOfInterestBelowWhatGoes) {
    watcher.setInterest({.directoryPaths = {"/w/d/e"}, .documentPaths = {"/w/d/n.txt"}});
    start();
    disk.leave("/w/d");
    EXPECT_EQ(toldAfter(), (Tellings{"removed dir /w/d", "look /w/d", "look /w/d/e"}));
}

TEST_F(TreeWatcherTest, PollsWhatIsOfInterestWithoutInotify) {
    disk.hasInotify = false;
    watcher.setInterest({.directoryPaths = {"/w/d"}});
    start();
    write("/w/d/n.txt");
    write("/w/d/new");
    write("/w/a.txt"); // nobody looks there
    // The looks go on until a further change would have another date.
    EXPECT_EQ(toldWithin(seconds(9)),
              (Tellings{"created /w/d/new", "modified /w/d/n.txt", "look /w/d", "look /w/d", "look /w/d"}));
    disk.remove("/w/d/new");
    EXPECT_EQ(toldWithin(seconds(9)), (Tellings{"removed /w/d/new", "look /w/d", "look /w/d", "look /w/d"}));
}

TEST_F(TreeWatcherTest, SendsWhoeverListedBetweenTwoPollsToLookAgain) {
    disk.watchLimit = 0;
    watcher.setInterest({.directoryPaths = {"/w/d"}});
    start();
    toldWithin(seconds(5));
    write("/w/d/new");
    disk.remove("/w/d/new");
    EXPECT_EQ(toldWithin(seconds(9)), (Tellings{"look /w/d", "look /w/d"}));
    watcher.setInterest({});
    write("/w/d/new");
    disk.remove("/w/d/new");
    watcher.setInterest({.directoryPaths = {"/w/d"}}); // by now
    EXPECT_EQ(toldWithin(seconds(1)), Tellings{"look /w/d"});
    toldWithin(seconds(9));
    write("/w/d/new");
    disk.remove("/w/d/new");
    disk.watchLimit = 9;
    EXPECT_EQ(toldWithin(seconds(9)), Tellings{"look /w/d"});
}

TEST_F(TreeWatcherTest, TellsNoChangeOfAFolderThatTheKernelMakesUp) {
    disk.coverage = EventCoverage::pointless;
    watcher.setInterest({.directoryPaths = {"/w/d"}});
    start();
    for (const std::string& telling : toldWithin(seconds(20))) EXPECT_EQ(telling, "look /w/d");
}

TEST_F(TreeWatcherTest, PollsFileSystemsThatOthersChange) {
    disk.coverage = EventCoverage::ownChangesOnly;
    watcher.setInterest({.directoryPaths = {"/w/d"}});
    start();
    write("/w/d/n.txt");
    disk.takeBlock(); // written elsewhere
    EXPECT_EQ(toldWithin(seconds(3)), Tellings{"modified /w/d/n.txt"});
}

TEST_F(TreeWatcherTest, TriesNoMoreOftenWhatStaysOutOfReach) {
    disk.coverage = EventCoverage::ownChangesOnly;
    watcher.setInterest({.directoryPaths = {"/w/d", "/w/d/e"}});
    start();
    disk.brokenPaths = {"/w/d"};
    const auto triesWithin = [&](std::chrono::nanoseconds time) {
        const std::size_t before = disk.openingsByPath;
        toldWithin(time);
        return disk.openingsByPath - before;
    };
    triesWithin(seconds(20));
    const std::size_t tries = triesWithin(seconds(20));
    triesWithin(seconds(200));
    EXPECT_LE(triesWithin(seconds(20)), tries);
    disk.brokenPaths.clear();
    write("/w/d/n.txt");
    disk.takeBlock(); // written elsewhere
    EXPECT_EQ(toldWithin(seconds(3)), Tellings{"modified /w/d/n.txt"});
}

TEST_F(TreeWatcherTest, GivesWatchesToWhatIsOfInterestAndTakesThemUpAgain) {
    disk.watchLimit = 2;
    start();
    EXPECT_EQ(disk.watchCount(), 2U);
    watcher.setInterest({.directoryPaths = {"/w/d/e"}});
    watcher.crawl(seconds(1));
    disk.watchLimit = 10;
    toldWithin(seconds(6));
    EXPECT_EQ(disk.watchCount(), 3U);
    write("/w/d/n.txt");
    EXPECT_EQ(toldAfter(), Tellings{"modified /w/d/n.txt"});
}

TEST_F(TreeWatcherTest, NoticesAMount) {
    start();
    disk.mount("/w/d/e");
    watcher.handleMountChange();
    EXPECT_EQ(toldAfter(), (Tellings{"removed dir /w/d/e", "created dir /w/d/e"}));
    write("/w/d/e/f");
    EXPECT_EQ(toldAfter(), Tellings{"created /w/d/e/f"});
}

TEST_F(TreeWatcherTest, TellsWhatIsMountedOverAFolderThatWaitsForAWatch) {
    disk.watchLimit = 2;
    start();
    const Tellings isAnother{"removed dir /w/d/e", "created dir /w/d/e"};
    disk.mount("/w/d/e");
    watcher.handleMountChange();
    EXPECT_EQ(toldAfter(), isAnother);
    disk.unmount("/w/d/e");
    disk.watchLimit = 9;
    EXPECT_EQ(toldWithin(seconds(6)), isAnother); // found before the table of mounts is read
    watcher.handleMountChange();
    write("/w/d/e/f");
    EXPECT_EQ(toldAfter(), Tellings{"created /w/d/e/f"});
}

TEST_F(TreeWatcherTest, FindsAMountBelowAFolderThatWasFoundBeforeItsMoveWasRead) {
    disk.makeDirectory("/w/d/e/f");
    start();
    disk.makeDirectory("/w/x");
    disk.mount("/w/x"); // for whose sake its parent is compared
    disk.mount("/w/d/e/f");
    disk.move("/w/d/e", "/w/e");
    watcher.handleMountChange();
    watcher.crawl(seconds(1));
    toldWithin(seconds(1));
    toldAfter();
    EXPECT_TRUE(disk.isWatched("/w/e/f"));
}

TEST_F(TreeWatcherTest, TellsWhatWasUnmountedFromAFolderWithTheSameNumber) {
    start();
    disk.mount("/w/d/e");
    watcher.handleMountChange();
    toldAfter();
    const ItemIdentity mounted = disk.peek("/w/d/e");
    disk.unmount("/w/d/e");
    disk.makeDirectory("/w/d/x");
    ASSERT_EQ(disk.peek("/w/d/x"), mounted);
    disk.exchange("/w/d/e", "/w/d/x");
    disk.remove("/w/d/x");
    watcher.handleMountChange();
    toldAfter();
    toldWithin(seconds(6));
    EXPECT_TRUE(disk.isWatched("/w/d/e"));
}

TEST_F(TreeWatcherTest, TakesAMountForNoFolderThatHasJustLeft) {
    for (const char* path : {"/out", "/w/d/e/f"}) disk.makeDirectory(path);
    start();
    const ItemIdentity former = disk.peek("/w/d/e");
    disk.move("/w/d/e/f", "/out/f");
    disk.remove("/w/d/e");
    for (const char* path : {"/w/d/e", "/w/d/e/f"}) disk.makeDirectory(path);
    ASSERT_EQ(disk.peek("/w/d/e"), former);
    disk.mount("/w/d/e/f");
    watcher.handleMountChange();
    toldAfter();
    watcher.setRoots({});
    EXPECT_EQ(disk.watchCount(), 0U);
}

TEST_F(TreeWatcherTest, FindsThatAWatchHasEndedThoughThereIsNoOther) {
    start();
    disk.remove("/w/d/e");
    disk.makeDirectory("/w/d/e");
    disk.loseBlock();
    disk.watchLimit = 0;
    EXPECT_EQ(toldAfter(), (Tellings{"removed dir /w/d/e", "created dir /w/d/e"}));
    disk.watchLimit = 9;
    toldWithin(seconds(6));
    EXPECT_TRUE(disk.isWatched("/w/d/e"));
}

TEST_F(TreeWatcherTest, WatchesARootOnceThereIsAWatchForIt) {
    disk.watchLimit = 0;
    start();
    disk.watchLimit = 9;
    toldWithin(seconds(6));
    for (const char* path : {"/w", "/w/d", "/w/d/e"}) EXPECT_TRUE(disk.isWatched(path)) << path;
}

TEST_F(TreeWatcherTest, ComparesAfterALossWhatLeavesAFolderThatIsOutOfReach) {
    disk.makeDirectory("/out");
    start();
    disk.makeDirectory("/w/d/e/f");
    disk.loseBlock();
    watcher.handleBlock(disk.takeBlock(), disk.time);
    disk.beforeEachCall = [&] { disk.time += milliseconds(1); };
    watcher.crawl(milliseconds(1)); // compares the root
    disk.beforeEachCall = {};
    disk.move("/w/d", "/out/d");
    watcher.crawl(seconds(1));
    disk.move("/out/d/e", "/w/e");
    EXPECT_EQ(toldAfter(), (Tellings{"renamed dir /w/d/e -> /w/e", "removed dir /w/d", "created dir /w/e/f"}));
    EXPECT_TRUE(disk.isWatched("/w/e/f"));
}

TEST_F(TreeWatcherTest, LooksAgainAfterAMountThatCameAndWentUnseen) {
    watcher.setInterest({.directoryPaths = {"/w", "/w/d"}});
    start();
    watcher.handleMountChange();
    EXPECT_EQ(toldWithin(seconds(6)), (Tellings{"look /w", "look /w/d"}));
}

TEST_F(TreeWatcherTest, FollowsANewFileThatIsOpenedAndMovedOverAnother) {
    start();
    write("/w/z.txt");
    EXPECT_EQ(toldAfter(), Tellings{"created /w/z.txt"});
    watcher.setInterest({.documentPaths = {"/w/z.txt"}});
    disk.move("/w/z.txt", "/w/a.txt");
    EXPECT_EQ(toldAfter(), (Tellings{"renamed /w/z.txt -> /w/a.txt", "modified /w/a.txt"}));
}

TEST_F(TreeWatcherTest, AsksTheDiskOnlyAboutNewFilesThatStayOpen) {
    start();
    write("/w/closed");
    disk.createFile("/w/open");
    int calls = 0;
    disk.beforeEachCall = [&] { ++calls; };
    watcher.handleBlock(disk.takeBlock(), disk.time);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(toldWithin(milliseconds(99)), Tellings{}); // one waits for the other
    EXPECT_EQ(toldWithin(milliseconds(1)), (Tellings{"created /w/closed", "created /w/open"}));
}

TEST_F(TreeWatcherTest, CountsTheQuietFromWhenTheEventWasRead) {
    start();
    write("/w/new");
    const WatchTime readAt = disk.time;
    disk.time += milliseconds(4);
    watcher.handleBlock(disk.takeBlock(), readAt);
    EXPECT_EQ(toldWithin(milliseconds(1)), Tellings{"created /w/new"});
    write("/w/later");
    watcher.handleBlock(disk.takeBlock(), disk.time);
    write("/w/earlier"); // a block that was read before the one that was handled first
    watcher.handleBlock(disk.takeBlock(), readAt);
    EXPECT_EQ(toldWithin(milliseconds(4)), Tellings{});
    EXPECT_EQ(toldWithin(milliseconds(1)), (Tellings{"created /w/later", "created /w/earlier"}));
}

TEST_F(TreeWatcherTest, ANewFileIsWaitedForFromItsBirth) {
    start();
    disk.createFile("/w/open");
    passOn();
    EXPECT_EQ(toldWithin(milliseconds(4)), Tellings{});
    disk.writeFile("/w/open");
    passOn();
    EXPECT_EQ(toldWithin(milliseconds(95)), Tellings{});
    EXPECT_EQ(toldWithin(milliseconds(1)), Tellings{"created /w/open"});
}

TEST_F(TreeWatcherTest, IsOverdueWhenAWindowStayedOpenForAnotherOne) {
    start();
    write("/w/d/n.txt");
    passOn();
    disk.time += milliseconds(200);
    EXPECT_FALSE(watcher.isOverdue());
    disk.time += milliseconds(200);
    EXPECT_TRUE(watcher.isOverdue());
}

TEST_F(TreeWatcherTest, TellsARenameWholeWhenItFallsIntoTwoWindows) {
    start();
    Tellings tellings;
    for (int time = 0; time < 252; time += 4) { // never quiet, so that the window is closed in the end
        write("/w/d/n.txt");
        if (time == 240) disk.move("/w/a.txt", "/w/b.txt");
        passOn();
        for (const std::string& telling : toldWithin(milliseconds(4))) tellings.push_back(telling);
    }
    EXPECT_EQ(tellings, Tellings{"modified /w/d/n.txt"});
    EXPECT_EQ(toldAfter(), (Tellings{"renamed /w/a.txt -> /w/b.txt"}));
}

TEST_F(TreeWatcherTest, KeepsNothingOfWhatWasRemoved) {
    start();
    for (int i = 0; i < 100; ++i) {
        disk.makeDirectory("/w/t");
        write("/w/t/f");
        passOn();
        disk.remove("/w/t");
        toldAfter();
    }
    const auto statistics = watcher.statistics();
    EXPECT_EQ(statistics.folders, 3U);
    EXPECT_EQ(statistics.watches, 3U);
    EXPECT_EQ(statistics.pendingNames, 0U);
}

} // namespace
