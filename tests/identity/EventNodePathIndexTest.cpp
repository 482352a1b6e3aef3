#include "identity/EventNodePathIndex.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <random>
#include <string>

#include "workspace/PathComponents.h"

namespace {

using Map = std::map<std::string, std::string>;

Map contents(const EventNodePathIndex& index) {
    Map map;
    index.forEach([&](const std::string& hint, const std::string& path) { map[hint] = path; });
    return map;
}

EventNodePathIndex indexOf(const std::string& rootPath, const Map& map) {
    EventNodePathIndex index(rootPath);
    for (const auto& [hint, path] : map) index.set(hint, path);
    return index;
}

// What the index is to be, without its structure.
struct PlainIndex {
    std::string rootPath{};
    Map map{};

    static std::string trimmed(std::string path) {
        if (path.size() >= 2 && path.back() == '/') path.pop_back();
        return path;
    }
    void set(const std::string& hint, const std::string& path) {
        if (!isAtOrWithin(trimmed(path), rootPath)) return;
        std::erase_if(map, [&](const auto& entry) { return entry.second == trimmed(path); });
        map[hint] = trimmed(path);
    }
    void removeAtOrWithin(const std::string& path) {
        std::erase_if(map, [&](const auto& entry) { return isAtOrWithin(entry.second, trimmed(path)); });
    }
    void remap(const std::string& from, const std::string& to) {
        if (trimmed(from) == trimmed(to)) return;
        if (isAtOrWithin(rootPath, trimmed(from)) && trimmed(from) != rootPath) map.clear();
        const std::string source = trimmed(from) == "/" ? "" : trimmed(from);
        const std::string target = trimmed(to) == "/" ? "" : trimmed(to);
        for (auto& [hint, path] : map) {
            if (!isAtOrWithin(path, trimmed(from))) continue;
            path = target + (path == "/" ? "" : path.substr(source.size()));
            if (path.empty()) path = "/";
        }
        std::erase_if(map, [&](const auto& entry) { return !isAtOrWithin(entry.second, rootPath); });
    }
    void merge(const PlainIndex& built) {
        for (const auto& [hint, path] : built.map) map[hint] = path;
    }
};

TEST(EventNodePathIndex, HintsAreComparedAsTextAndNotByValue) {
    const Map map{{"number:0", "/a"},
                  {"number:7", "/b"},
                  {"number:07", "/c"},
                  {"number:+7", "/d"},
                  {"data:Nw==", "/e"},
                  {"number:4294967303", "/i"}, // 7 and a bit in the upper half
                  {"number:18446744073709551615", "/f"},
                  {"number:18446744073709551616", "/g"},
                  {"", "/h"}};
    EventNodePathIndex index = indexOf("/", map);
    EXPECT_EQ(contents(index), map);
    for (const auto& [hint, path] : map) EXPECT_EQ(index.path(hint), path) << hint;
    EXPECT_EQ(index.path("number:8"), std::nullopt);
    index.removeAtOrWithin("/");
    EXPECT_TRUE(index.isEmpty());
}

TEST(EventNodePathIndex, AListingMayTakeTheNumberOfItsOwnDirectory) {
    for (const bool isListedBefore : {true, false}) {
        EventNodePathIndex index("/w");
        index.set("number:1", isListedBefore ? "/w/a/directory" : "/w/a/other");
        index.set("number:2", isListedBefore ? "/w/b/other" : "/w/b/directory");
        index.remap("/w/b", "/w/a"); // so that there are two of these
        index.setChildren("/w/a/directory", {{"first", isListedBefore ? 1U : 2U}, {"second", 3}});
        const char* const otherHint = isListedBefore ? "number:2" : "number:1";
        const char* const firstHint = isListedBefore ? "number:1" : "number:2";
        EXPECT_EQ(contents(index), (Map{{firstHint, "/w/a/directory/first"},
                                        {otherHint, "/w/a/other"},
                                        {"number:3", "/w/a/directory/second"}}));
    }
}

TEST(EventNodePathIndex, AFilledTreeGivesANumberToTheLastOfItsNodes) {
    PathTree tree("/w");
    const auto root = tree.appendChild(PathTree::top, "", 1);
    tree.appendChild(root, "first", 5);
    const auto directory = tree.appendChild(root, "directory", 5);
    tree.appendChild(directory, "last", 5);
    tree.appendChild(directory, "greatest", ~std::uint64_t{0});
    EXPECT_EQ(contents(EventNodePathIndex(std::move(tree))),
              (Map{{"number:1", "/w"},
                   {"number:5", "/w/directory/last"},
                   {"number:18446744073709551615", "/w/directory/greatest"}}));
}

// Few names, so that paths meet often: in one another, in their own subtrees, in the root and outside of it.
class RandomPaths {
public:
    explicit RandomPaths(std::mt19937& source) : random(source) {}

    std::string path() {
        std::string path = one(40) ? "/elsewhere" : root;
        if (one(60)) path = "/";
        for (auto depth = random() % 5; depth > 0; --depth) path += names[random() % nameCount];
        if (path.empty() || one(10)) path += "/";
        return path;
    }
    std::string hint() {
        const std::string number = std::to_string(fileNumber());
        return one(10) ? "data:" + number : "number:" + number;
    }
    // Some differ in the upper half alone.
    std::uint64_t fileNumber() { return random() % 30 | (one(2) ? 0 : std::uint64_t{1} << 40); }
    bool one(unsigned in) { return random() % in == 0; }

    std::string root = "/w";
    std::size_t nameCount = std::size(names);

private:
    static constexpr const char* names[] = {"/a", "/b", "/c", "/ab", "/a name of more than fifteen bytes", "/"};
    std::mt19937& random;
};

void checkAgainstPlainIndex(const std::string& rootPath, std::mt19937& random) {
    RandomPaths some(random);
    if (rootPath == "/") {
        some.root = "";
        --some.nameCount; // an empty name directly below it would be the root again
    }
    EventNodePathIndex index(rootPath);
    PlainIndex plain{.rootPath = rootPath};
    for (int step = 0; step < 3000; ++step) {
        const std::string path = some.path();
        const std::string other = some.path();
        switch (random() % 16) {
            case 0:
                index.removeAtOrWithin(path);
                plain.removeAtOrWithin(path);
                break;
            case 1:
            case 2:
                index.remap(path, other);
                plain.remap(path, other);
                break;
            case 3: {
                EventNodePathIndex built(rootPath);
                PlainIndex plainBuilt{.rootPath = rootPath};
                for (auto entries = random() % 40; entries > 0; --entries) {
                    const std::string hint = some.hint();
                    const std::string builtPath = some.path();
                    built.set(hint, builtPath);
                    plainBuilt.set(hint, builtPath);
                }
                index.merge(std::move(built));
                plain.merge(plainBuilt);
                break;
            }
            case 4:
            case 5: {
                if (path.ends_with('/')) break; // a listing has the normal form of its directory's path
                std::vector<EventNodePathIndex::NumberedName> children;
                for (const char* name : {"a", "b", "c", "ab"}) {
                    if (some.one(2)) children.push_back({name, some.fileNumber()});
                }
                index.setChildren(path, children);
                for (const auto& [name, number] : children) {
                    plain.set("number:" + std::to_string(number), appendingPathComponent(path, name));
                }
                break;
            }
            default: {
                const std::string hint = some.hint();
                index.set(hint, path);
                plain.set(hint, path);
            }
        }
        ASSERT_EQ(contents(index), plain.map) << "step " << step << ", " << path << ", " << other;
        ASSERT_EQ(index.size(), plain.map.size());
        const std::string asked = some.hint();
        const auto known = plain.map.find(asked);
        ASSERT_EQ(index.path(asked), known == plain.map.end() ? std::nullopt : std::optional(known->second));
    }
    for (const auto& [hint, path] : plain.map) index.set(hint, rootPath);
    EXPECT_EQ(index.size(), plain.map.empty() ? 0U : 1U);
    EXPECT_EQ(index.nodeCount(), index.size()) << "nodes that mean nothing are left";
    index.removeAtOrWithin(rootPath);
    EXPECT_EQ(index.nodeCount(), 0U);
}

TEST(EventNodePathIndex, BehavesLikeAMap) {
    const auto seed = static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    checkAgainstPlainIndex("/w", random);
    checkAgainstPlainIndex("/", random);
}

} // namespace
