#include <gtest/gtest.h>
#include <sys/inotify.h>

#include <map>
#include <random>

#include "platform/linux/watch/DeliveryWindow.h"
#include "platform/linux/watch/DepartureOrder.h"
#include "platform/linux/watch/FolderSnapshot.h"
#include "platform/linux/watch/KernelRecord.h"
#include "platform/linux/watch/MountTable.h"
#include "platform/linux/watch/NetEffect.h"

namespace {

constexpr ItemType file = ItemType::file;
constexpr ItemType directory = ItemType::directory;
constexpr ItemIdentity nothing{};

TEST(NetEffect, IsTheDifferenceThatLasts) {
    constexpr ItemIdentity a{1, file}, b{2, file}, d{3, directory}, e{4, directory};
    constexpr auto same = ItemOrigin::sameName;
    constexpr auto newcomer = ItemOrigin::newcomer;
    constexpr auto moved = ItemOrigin::movedFromFree;
    const struct {
        const char* name;
        NameHistory history;
        NetEffect effect;
    } rows[]{
        {"came and went", {.origin = newcomer, .isWritten = true}, {}},
        {"new", {.is = a, .origin = newcomer}, {.isCreated = true}},
        {"found without an event", {.is = a, .origin = same}, {.isCreated = true}},
        {"moved to a free name", {.is = a, .origin = moved}, {.isRenamedHere = true}},
        {"saved and given another name",
         {.is = a, .origin = moved, .isNewSave = true},
         {.isRenamedHere = true, .isModified = true}},
        {"a temporary given another name",
         {.is = a, .origin = moved, .isFreshTemporary = true},
         {.isRenamedHere = true}},
        {"gone", {.was = a, .origin = newcomer}, {.isRemoved = true}},
        {"written", {.was = a, .is = a, .origin = same, .isWritten = true}, {.isModified = true}},
        {"written and touched",
         {.was = a, .is = a, .origin = same, .isWritten = true, .hasNewAttributes = true},
         {.isModified = true}},
        {"touched", {.was = a, .is = a, .origin = same, .hasNewAttributes = true}, {.hasNewAttributes = true}},
        {"away and back", {.was = a, .is = a, .origin = same}, {}},
        {"replaced by a file with the same number", {.was = a, .is = a, .origin = newcomer}, {.isModified = true}},
        {"replaced without an event", {.was = a, .is = b, .origin = same}, {.isModified = true}},
        {"saved by a temporary", {.was = a, .is = b, .origin = moved, .isFreshTemporary = true}, {.isModified = true}},
        {"moved over", {.was = a, .is = b, .origin = moved}, {.isRenamedHere = true, .isModified = true}},
        {"directory replaced", {.was = d, .is = e, .origin = newcomer}, {.isRemoved = true, .isCreated = true}},
        {"directory replaced, same number",
         {.was = d, .is = d, .origin = newcomer},
         {.isRemoved = true, .isCreated = true}},
        {"directory moved over an empty one",
         {.was = d, .is = e, .origin = moved},
         {.isRemoved = true, .isRenamedHere = true}},
        {"directory instead of a file",
         {.was = a, .is = d, .origin = newcomer},
         {.isRemoved = true, .isCreated = true}},
    };
    for (const auto& row : rows) EXPECT_EQ(netEffect(row.history), row.effect) << row.name;
}

TEST(DeliveryWindow, ClosesWhenThingsAreQuietAndSettled) {
    using std::chrono::milliseconds;
    const auto at = [](int time) { return WatchTime(milliseconds(time)); };
    const struct {
        const char* name;
        DeliveryWindow window;
        int closing;
    } rows[]{
        {"one event", {at(0), at(0), {}}, 5},
        {"several", {at(0), at(40), {}}, 45},
        {"a name that vanished", {at(0), at(0), at(0)}, 100},
        {"settled names after it", {at(0), at(98), at(0)}, 103},
        {"one vanished later", {at(0), at(90), at(90)}, 190},
        {"never quiet", {at(0), at(248), {}}, 250},
        {"never settled", {at(0), at(200), at(200)}, 250},
    };
    for (const auto& row : rows) EXPECT_EQ(row.window.closing({}), at(row.closing)) << row.name;
}

std::string recordBytes(int watch, std::uint32_t mask, std::uint32_t cookie, std::string name, std::size_t padded) {
    inotify_event event{};
    event.wd = watch;
    event.mask = mask;
    event.cookie = cookie;
    event.len = static_cast<std::uint32_t>(padded);
    name.resize(padded);
    return std::string(reinterpret_cast<const char*>(&event), sizeof event) + name;
}

TEST(KernelRecords, AreTakenOutOfABlock) {
    const std::string named = recordBytes(1, IN_MOVED_TO | IN_ISDIR, 7, "abc", 16);
    const std::string nameless = recordBytes(2, IN_IGNORED, 0, "", 0);
    const std::string full = recordBytes(3, IN_CREATE, 0, "sixteen letters!", 16);
    const KernelRecord first{1, IN_MOVED_TO | IN_ISDIR, 7, "abc"};
    const KernelRecord second{2, IN_IGNORED, 0, ""};
    const KernelRecord third{3, IN_CREATE, 0, "sixteen letters!"};
    const struct {
        const char* name;
        std::string block;
        std::vector<KernelRecord> records;
    } rows[]{
        {"empty", "", {}},
        {"padded name", named, {first}},
        {"no name between names", named + nameless + full, {first, second, third}},
        {"cut in the head", named + full.substr(0, 10), {first}},
        {"cut in the name", named + full.substr(0, 20), {first}},
        {"loss", overflowBlock(), {{-1, IN_Q_OVERFLOW, 0, ""}}},
    };
    for (const auto& row : rows) EXPECT_EQ(kernelRecords(row.block), row.records) << row.name;
    EXPECT_TRUE(first.isDirectory());
    EXPECT_FALSE(third.isDirectory());
}

TEST(MountTable, ReadsTheKernelsLines) {
    const std::string table =
        "36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw\n"
        "broken\n"
        "22 1 0:20 / /a\\040b\\134c rw - tmpfs none rw";
    EXPECT_EQ(mountPoints(table), (std::vector<MountPoint>{{"/a b\\c", 22}, {"/mnt2", 36}}));
    EXPECT_TRUE(mountPoints("").empty());
}

// Against a map, through all sizes in which it searches, indexes and tidies up.
TEST(FolderSnapshot, KeepsWhatIsSet) {
    std::mt19937 random(7);
    for (const unsigned names : {3U, 60U, 70U, 3000U}) {
        FolderSnapshot snapshot;
        std::map<std::string, ItemIdentity> expected;
        for (unsigned i = 0; i < names / 2; ++i) {
            const ItemIdentity identity{~std::uint64_t{0} - i, directory};
            snapshot.append("n" + std::to_string(i), identity);
            expected["n" + std::to_string(i)] = identity;
        }
        snapshot.finishAppending();
        for (int step = 0; step < 20000; ++step) {
            const std::string name = "n" + std::to_string(random() % names);
            const std::uint64_t upperHalf = random() % 2 == 0 ? 0 : std::uint64_t{random()} << 32;
            const ItemIdentity identity =
                random() % 3 == 0 ? nothing : ItemIdentity{upperHalf | random() % 100000, file};
            snapshot.set(name, identity);
            if (identity)
                expected[name] = identity;
            else
                expected.erase(name);
            ASSERT_EQ(snapshot.find(name), identity) << name;
        }
        std::map<std::string, ItemIdentity> found;
        snapshot.forEach([&](std::string_view name, ItemIdentity identity) {
            EXPECT_TRUE(found.emplace(name, identity).second) << name;
        });
        EXPECT_EQ(found, expected);
        EXPECT_EQ(snapshot.find("n"), nothing);
        EXPECT_LT(snapshot.memoryUse(), 64 * names + 128);
    }
}

TEST(FolderTree, PathsBeginAtTheTopWhereverThatIs) {
    FolderTree tree;
    for (const char* top : {"/", "/w", "/a folder with a name that needs room of its own"}) {
        FolderNode* const folder = tree.addTop(top);
        FolderNode* const child = tree.addChild(tree.addChild(folder, "d"), "e");
        const std::string begin = folder->name == "/" ? "" : top;
        EXPECT_EQ(currentPath(folder), top);
        EXPECT_EQ(currentPath(child->parent), begin + "/d");
        EXPECT_EQ(reportedPath(child), begin + "/d/e");
        EXPECT_EQ(currentPath({child, "f"}), begin + "/d/e/f");
    }
}

TEST(DepartureOrder, TakesLongChains) {
    FolderTree tree;
    FolderNode* top = tree.addTop("/w");
    std::vector<Departure> departures;
    for (std::uint64_t i = 0; i < 100'000; ++i)
        departures.push_back({{top, std::to_string(i)}, NameKey{top, std::to_string(i + 1)}, {i + 1, file}, i});
    const auto ordered = orderedDepartures(std::move(departures));
    ASSERT_EQ(ordered.size(), 100'000U);
    EXPECT_EQ(ordered.front().source.name, "99999");
    EXPECT_EQ(ordered.back().source.name, "0");
}

} // namespace
