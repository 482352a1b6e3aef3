#include "platform/NodeTable.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <vector>

namespace {

// Records are numbers of their own; the hash is given by the test.
class Numbers {
public:
    explicit Numbers(std::uint64_t (*hashOfNumber)(std::uint32_t)) : hash(hashOfNumber) {}

    void insert(std::uint32_t number) { table.insert(hash(number), number, hash); }
    void erase(std::uint32_t number) { table.erase(hash(number), number); }
    bool contains(std::uint32_t number) const {
        return table.find(hash(number), [&](std::uint32_t other) { return other == number; }).has_value();
    }

    NodeTable table{};

private:
    std::uint64_t (*hash)(std::uint32_t);
};

std::uint64_t spread(std::uint32_t number) {
    return number * 0x9E3779B97F4A7C15U ^ number * 0xD6E8FEB86659FD93U >> 32;
}
std::uint64_t always(std::uint32_t) {
    return 0xABCDEF;
}
std::uint64_t alikeInUpperBits(std::uint32_t number) {
    return spread(number) >> 30;
}
std::uint64_t alikeInLowerBits(std::uint32_t number) {
    return spread(number) << 40;
}

TEST(NodeTable, HoldsWhatWasInsertedAndNotErased) {
    const auto seed = static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    SCOPED_TRACE("seed " + std::to_string(seed));
    const struct {
        const char* name;
        std::uint64_t (*hash)(std::uint32_t);
        std::uint32_t numbers;
        std::size_t reserved;
    } cases[] = {
        {"spread", spread, 60000, 0},
        {"reserved", spread, 60000, 20000},
        {"one hash for all", always, 6000, 0},
        {"alike in the upper bits", alikeInUpperBits, 10000, 0},
        {"alike in the lower bits", alikeInLowerBits, 10000, 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        std::mt19937 random(seed);
        Numbers numbers(row.hash);
        if (row.reserved > 0) numbers.table.reserve(row.reserved);
        std::vector<bool> expected(row.numbers);
        // Erasing prevails in the second half, so that shards also become empty again.
        for (std::uint32_t step = 0; step < row.numbers * 4; ++step) {
            const std::uint32_t number = static_cast<std::uint32_t>(random() % row.numbers);
            const bool shallBeIn = random() % 8 < (step < row.numbers * 2 ? 6 : 1);
            if (shallBeIn && !expected[number]) numbers.insert(number);
            if (!shallBeIn && expected[number]) numbers.erase(number);
            expected[number] = shallBeIn;
        }
        for (std::uint32_t number = 0; number < row.numbers; ++number) {
            ASSERT_EQ(numbers.contains(number), expected[number]) << number;
        }
        for (std::uint32_t number = 0; number < row.numbers; ++number) {
            if (expected[number]) numbers.erase(number);
        }
        for (std::uint32_t number = 0; number < row.numbers; ++number) ASSERT_FALSE(numbers.contains(number));
    }
}

} // namespace
