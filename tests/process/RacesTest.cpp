#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <optional>
#include <random>
#include <set>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "tests/process/DaemonClient.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

// Two daemons and another program on one tree, where all three rename the same few files and save them. In each round
// both daemons get all their requests at once, and the other program does what it does while they work. Then all stand
// still: a text of before that is gone must have been replaced by a save, and what was saved is there. RACE_SEED=n
// plays one game again, as far as that is possible.

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

constexpr int roundCount = 200;
constexpr std::size_t nameCount = 5;
constexpr std::size_t fileCount = 3; // and so there are free names, for which everybody competes

// The same line again and again, so that no part of one text passes for another.
std::string textOf(int number) {
    std::string text = std::to_string(number) + '\n';
    while (text.size() < 20'000) text += text;
    return text;
}

class Chance {
public:
    Chance(std::string rootPath, std::uint64_t seed) : root(std::move(rootPath)), random(seed) {}

    std::size_t below(std::size_t count) { return random() % count; }
    std::string path() { return root + "/n" + std::to_string(below(nameCount)); }

    const std::string root;

private:
    std::mt19937_64 random;
};

class Client {
public:
    explicit Client(Chance& commonChance) : chance(commonChance) {
        daemon.ask({.command = Command::openWorkspace, .rootPath = chance.root});
        documentID =
            take(daemon.ask({.command = Command::open, .path = chance.root + "/n0"})).snapshot.value().documentID;
    }

    // Some renames, and among them a save of the text, if there is one.
    void send(const std::optional<std::string>& text) {
        const std::size_t saveTurn = chance.below(requestCount);
        for (std::size_t turn = 0; turn < requestCount; ++turn) {
            if (text && turn == saveTurn)
                daemon.send(
                    {.command = Command::save, .documentID = documentID, .text = text, .expectedVersion = version});
            else
                daemon.send({.command = Command::renameWorkspaceItem,
                             .rootPath = chance.root,
                             .path = chance.path(),
                             .destinationPath = chance.path()});
        }
    }

    // Whether a save was among the requests, and was reported as successful.
    bool takeAnswers() {
        bool hasSaved = false;
        for (std::size_t answered = 0; answered < requestCount;) {
            const auto envelope = take(daemon.nextEnvelope());
            if (envelope.kind != EditorDocumentEnvelopeKind::response) continue;
            ++answered;
            hasSaved |= envelope.command == Command::save && envelope.success == true;
        }
        return hasSaved;
    }

private:
    EditorDocumentDaemonEnvelope take(EditorDocumentDaemonEnvelope envelope) {
        if (envelope.snapshot) version = envelope.snapshot->version;
        if (envelope.event == EditorDocumentEventKind::deleted) ++version;
        return envelope;
    }

    static constexpr std::size_t requestCount = 20;

    Chance& chance;
    DaemonClient daemon{};
    std::string documentID{};
    std::int64_t version = 0;
};

// The program that is no daemon.
class Outsider {
public:
    explicit Outsider(Chance& commonChance) : chance(commonChance) {}

    // For as long as others are at work. Whoever opens a file sees one whole text.
    void play(const std::optional<int>& savedNumber, const std::function<bool()>& areOthersAtWork) {
        if (savedNumber) {
            writeFile(temporaryPath, textOf(*savedNumber));
            fs::rename(temporaryPath, chance.path());
        }
        for (int turn = 0; areOthersAtWork(); ++turn) {
            if (turn % 16 == 0) read(chance.path());
            ::renameat2(AT_FDCWD, chance.path().c_str(), AT_FDCWD, chance.path().c_str(), RENAME_NOREPLACE);
        }
    }

    // The numbers of all texts.
    std::set<int> texts() const {
        std::set<int> numbers;
        for (const auto& entry : fs::directory_iterator(chance.root)) {
            EXPECT_EQ(entry.path().filename().string()[0], 'n') << entry.path() << " was left behind";
            if (const auto number = read(entry.path())) numbers.insert(*number);
        }
        return numbers;
    }

    // As many files as there are to be, at names of which nobody knows which. Nobody else may be at work.
    void tidy(std::function<int()> newNumber) const {
        while (texts().size() > fileCount) fs::remove(chance.path());
        while (texts().size() < fileCount) {
            if (const std::string path = chance.path(); !fs::exists(path)) writeFile(path, textOf(newNumber()));
        }
    }

private:
    static std::optional<int> read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        if (!file) return std::nullopt;
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const int number = std::atoi(text.c_str());
        EXPECT_EQ(text.size(), textOf(number).size()) << path << " is no whole text";
        EXPECT_TRUE(text == textOf(number)) << path << " is a mixture";
        return number;
    }

    Chance& chance;
    const std::string temporaryPath = chance.root + "-temporary";
};

bool isPending(const std::future<bool>& answer) {
    return answer.wait_for(std::chrono::seconds(0)) == std::future_status::timeout;
}

TEST(Races, NoTextIsLostThatWasReportedAsSaved) {
    const char* given = std::getenv("RACE_SEED");
    const std::uint64_t seed = given ? std::strtoull(given, nullptr, 10) : std::random_device{}();
    const TemporaryDirectory directory;
    fs::create_directory(directory.path("w"));
    Chance chance(directory.path("w"), seed);
    int lastNumber = 0, savedCount = 0;
    const auto newNumber = [&] { return ++lastNumber; };
    writeFile(chance.root + "/n0", textOf(newNumber()));
    Outsider outsider(chance);
    outsider.tidy(newNumber);
    Client clients[] = {Client(chance), Client(chance)};
    for (int round = 0; round < roundCount; ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round));
        const std::set<int> before = outsider.texts();
        std::set<int> saved;
        std::optional<int> numbers[3];
        for (auto& number : numbers) {
            if (chance.below(2) == 0) number = newNumber();
        }
        std::future<bool> answers[2];
        for (std::size_t i = 0; i < 2; ++i) {
            clients[i].send(numbers[i] ? std::optional(textOf(*numbers[i])) : std::nullopt);
            answers[i] = std::async(std::launch::async, &Client::takeAnswers, &clients[i]);
        }
        outsider.play(numbers[2], [&] { return std::ranges::any_of(answers, isPending); });
        if (numbers[2]) saved.insert(*numbers[2]);
        for (std::size_t i = 0; i < 2; ++i) {
            if (answers[i].get()) saved.insert(*numbers[i]), ++savedCount;
        }
        std::set<int> possible = before, gone;
        possible.insert(saved.begin(), saved.end());
        const std::set<int> after = outsider.texts();
        std::ranges::set_difference(possible, after, std::inserter(gone, gone.end()));
        ASSERT_LE(gone.size(), saved.size())
            << testing::PrintToString(gone) << " are gone after saves of " << testing::PrintToString(saved);
        ASSERT_TRUE(std::ranges::includes(possible, after)) << testing::PrintToString(after) << " but not saved";
        ASSERT_TRUE(saved.empty() || !std::ranges::includes(gone, saved)) << "nothing that was saved is there";
        if (HasFailure()) break;
        outsider.tidy(newNumber);
    }
    EXPECT_GT(savedCount, roundCount / 10);
}

} // namespace
