#include "identity/StableNodeIDTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <random>
#include <set>
#include <string>

#include "workspace/PathComponents.h"

namespace {

StableNodeKey file(int number) {
    return StableNodeKey(FileIdentifierBytes{"file " + std::to_string(number)});
}

// A disk and the table that is told of it.
class StableNodeIDTableTest : public testing::Test {
protected:
    std::string seen(const std::string& path, int number) { return seen(path, file(number)); }
    std::string seen(const std::string& path, const StableNodeKey& key) {
        disk.insert(path);
        return table.nodeID(path, key, [this](const std::string& other) { return disk.contains(other); });
    }
    void gone(const std::string& path) { disk.erase(path); }

    std::set<std::string> disk;
    StableNodeIDTable table;
};

TEST_F(StableNodeIDTableTest, AHardLinkHasAnIDOfItsOwn) {
    std::set<std::string> ids;
    for (int link = 0; link < 10; ++link) ids.insert(seen("/w/link" + std::to_string(link), 1));
    EXPECT_EQ(ids.size(), 10U);
    const std::string second = seen("/w/link1", 1);
    gone("/w/link1");
    EXPECT_EQ(seen("/w/renamed", 1), second);
}

TEST_F(StableNodeIDTableTest, AnItemWithNumbersOnlyIsTreatedAlike) {
    EXPECT_EQ(seen("/w/a", StableNodeKey(3, 14)), "inode:3:14");
    EXPECT_NE(seen("/w/b", StableNodeKey(3, 14)), "inode:3:14");
    EXPECT_EQ(seen("/w/a", StableNodeKey(3, 15)), "inode:3:14");
}

TEST_F(StableNodeIDTableTest, ClosingARootKeepsWhatAnotherOneCovers) {
    const struct {
        const char* name;
        std::vector<std::string> open;
        std::set<std::string> remaining;
    } cases[] = {
        {"alone", {"/v"}, {"/v/z"}},
        {"within another", {"/"}, {"/v/z", "/w", "/w/a", "/w/a/x", "/w/a/b/y", "/w/ab"}},
        {"around another", {"/w/a"}, {"/v/z", "/w/a", "/w/a/x", "/w/a/b/y"}},
        {"around nested ones", {"/w/a/b", "/w/a", "/w/none"}, {"/v/z", "/w/a", "/w/a/x", "/w/a/b/y"}},
        {"beside one with the same beginning", {"/w/"}, {"/v/z"}},
    };
    const std::vector<std::string> paths{"/w", "/w/a", "/w/a/x", "/w/a/b/y", "/w/ab", "/v/z"};
    for (const auto& row : cases) {
        table = {};
        std::map<std::string, std::string> ids;
        for (int number = 0; number < 6; ++number)
            ids[paths[std::size_t(number)]] = seen(paths[std::size_t(number)], number);
        table.closeRoot("/w", row.open);
        EXPECT_EQ(table.size(), row.remaining.size()) << row.name;
        for (const auto& path : row.remaining) EXPECT_EQ(seen(path, 99), ids[path]) << row.name << ", " << path;
    }
}

// What the table is to be, without its structure.
struct PlainEntry {
    int key{};
    std::string id{};
};
using PlainTable = std::map<std::string, PlainEntry>;

bool hasID(const PlainTable& plain, const std::string& id) {
    return std::ranges::any_of(plain, [&](const auto& entry) { return entry.second.id == id; });
}

void carry(PlainTable& plain, const std::string& from, const std::string& to) {
    PlainTable carried;
    for (auto entry = plain.begin(); entry != plain.end();) {
        if (isAtOrWithin(entry->first, from)) {
            carried[to + entry->first.substr(from.size())] = entry->second;
            entry = plain.erase(entry);
        } else {
            ++entry;
        }
    }
    plain.merge(carried);
}

// Checks one answer of the table and enters it.
void checkSeen(PlainTable& plain, const std::set<std::string>& disk, const std::string& path, int key,
               const std::string& id) {
    if (const auto known = plain.find(path); known != plain.end()) {
        ASSERT_EQ(id, known->second.id);
        known->second.key = key;
        return;
    }
    const auto isVacated = [&](const auto& entry) { return entry.second.key == key && !disk.contains(entry.first); };
    if (std::ranges::any_of(plain, isVacated)) {
        const auto former =
            std::ranges::find_if(plain, [&](const auto& e) { return isVacated(e) && e.second.id == id; });
        ASSERT_NE(former, plain.end()) << "the ID was not taken along";
        plain.erase(former);
    } else {
        ASSERT_FALSE(hasID(plain, id)) << "two names have one ID";
        if (!hasID(plain, file(key).nodeID())) {
            ASSERT_EQ(id, file(key).nodeID());
        }
    }
    plain[path] = {key, id};
}

TEST_F(StableNodeIDTableTest, BehavesLikeAPlainTable) {
    const auto seed = static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    constexpr const char* names[] = {"/a", "/b", "/c", "/ab"};
    const auto somePath = [&] {
        std::string path = "/w";
        for (auto depth = 1 + random() % 3; depth > 0; --depth) path += names[random() % std::size(names)];
        return path;
    };
    PlainTable plain;
    for (int step = 0; step < 20000; ++step) {
        const std::string path = somePath();
        const std::string other = somePath();
        switch (random() % 10) {
            case 0:
                table.carry(path, other);
                if (path != other) carry(plain, path, other);
                break;
            case 1:
                table.removeAtOrWithin(path);
                std::erase_if(plain, [&](const auto& entry) { return isAtOrWithin(entry.first, path); });
                break;
            case 2:
            case 3:
                gone(path);
                break;
            default: {
                const int key = static_cast<int>(random() % 12);
                const std::string id = seen(path, key);
                checkSeen(plain, disk, path, key, id);
                if (HasFatalFailure()) FAIL() << "step " << step;
            }
        }
        ASSERT_EQ(table.size(), plain.size()) << "step " << step;
    }
}

} // namespace
