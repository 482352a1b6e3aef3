#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

#include "tests/process/WatchedSession.h"
#include "tests/support/Files.h"

// Random changes by the client and by other programs, round after round; after each the client, which only follows the
// envelopes, knows what is on the disk. WATCH_CONVERGENCE_OPERATIONS says for how long, WATCH_CONVERGENCE_SEED where
// the random numbers begin.

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

std::uint64_t number(const char* variable, std::uint64_t usual) {
    const char* given = std::getenv(variable);
    return given ? std::strtoull(given, nullptr, 10) : usual;
}

class Changes {
public:
    Changes(WatchedSession& watchedSession, std::uint64_t seed) : session(watchedSession), random(seed) {}

    void makeOne() {
        using Change = void (Changes::*)();
        static constexpr Change changes[] = {
            &Changes::writeOne,    &Changes::writeOne,   &Changes::appendOne, &Changes::makeFolder,
            &Changes::renameOne,   &Changes::renameOne,  &Changes::renameOne, &Changes::removeOne,
            &Changes::replaceOne,  &Changes::keepBackup, &Changes::copyTree,  &Changes::moveOutAndIn,
            &Changes::swapFolders, &Changes::linkOne,    &Changes::expandOne, &Changes::expandOne,
            &Changes::openOne,     &Changes::saveOne,    &Changes::closeOne,  &Changes::requestOne,
        };
        (this->*changes[below(std::size(changes))])();
    }

    std::string log;

private:
    std::size_t below(std::size_t count) { return random() % count; }
    std::string text() { return "text " + std::to_string(++textCount) + '\n'; }
    std::string outside() { return session.directory.path("outside" + std::to_string(below(2))); }

    // Few names, so that they meet again.
    std::string name() { return std::string(1, static_cast<char>('a' + below(6))); }
    std::string folder() {
        std::string path = session.root;
        for (std::size_t depth = below(4); depth > 0; --depth) {
            const std::string next = path + '/' + name();
            if (fs::is_directory(fs::symlink_status(next))) path = next;
        }
        return path;
    }
    std::string item() { return folder() + '/' + name(); }
    void note(const std::string& what) { log += what + '\n'; }

    // Other programs.
    void writeOne() { write(item(), std::ios::trunc); }
    void appendOne() { write(item(), std::ios::app); }
    void write(const std::string& path, std::ios::openmode mode) {
        note("write " + path);
        if (fs::is_regular_file(fs::status(path, ignored)) || !fs::exists(fs::symlink_status(path)))
            std::ofstream(path, std::ios::binary | mode) << text();
    }
    void makeFolder() {
        const std::string path = item();
        note("mkdir " + path);
        fs::create_directory(path, ignored);
    }
    void renameOne() { rename(item(), item()); }
    void rename(const std::string& from, const std::string& to) {
        note("rename " + from + " > " + to);
        fs::rename(from, to, ignored);
    }
    void removeOne() {
        const std::string path = item();
        note("remove " + path);
        fs::remove_all(path, ignored);
    }
    void replaceOne() {
        const std::string path = item();
        note("replace " + path);
        std::ofstream(path + ".new", std::ios::binary) << text();
        fs::rename(path + ".new", path, ignored);
        fs::remove(path + ".new", ignored);
    }
    void keepBackup() {
        const std::string path = item();
        note("save with backup " + path);
        if (!fs::is_regular_file(fs::symlink_status(path))) return;
        fs::rename(path, path + '~', ignored);
        std::ofstream(path, std::ios::binary) << text();
    }
    void copyTree() {
        const std::string from = folder();
        const std::string to = item();
        note("copy " + from + " > " + to);
        if (to.starts_with(from) || fs::exists(fs::symlink_status(to))) return;
        fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, ignored);
    }
    void moveOutAndIn() {
        if (below(2) == 0) {
            fs::remove_all(session.directory.path("outside0"), ignored);
            rename(item(), session.directory.path("outside0"));
        } else {
            rename(outside(), item());
        }
    }
    void swapFolders() {
        const std::string left = item();
        const std::string right = item();
        if (left.starts_with(right) || right.starts_with(left)) return;
        note("swap");
        rename(left, session.directory.path("swapped"));
        rename(right, left);
        rename(session.directory.path("swapped"), right);
        fs::remove_all(session.directory.path("swapped"), ignored);
    }
    void linkOne() {
        const std::string path = item();
        note("link " + path);
        fs::create_symlink(name(), path, ignored);
    }

    // The client.
    void expandOne() {
        const std::string path = folder();
        if (path != session.root && !session.picture.folders.contains(path.substr(0, path.rfind('/')))) return;
        note("expand " + path);
        session.ask({.command = Command::loadWorkspaceChildren, .rootPath = session.root, .path = path});
    }
    void openOne() {
        const std::string path = item();
        note("open " + path);
        session.ask({.command = Command::open, .path = path});
    }
    ClientPicture::Document* anyDocument(std::string& documentID) {
        auto& documents = session.picture.documents;
        if (documents.empty()) return nullptr;
        const auto chosen = std::next(documents.begin(), static_cast<std::ptrdiff_t>(below(documents.size())));
        documentID = chosen->first;
        return &chosen->second;
    }
    void saveOne() {
        std::string documentID;
        const auto* document = anyDocument(documentID);
        if (!document) return;
        note("save " + document->path);
        session.ask(
            {.command = Command::save, .documentID = documentID, .text = text(), .expectedVersion = document->version});
    }
    void closeOne() {
        std::string documentID;
        if (session.picture.documents.size() < 4 || !anyDocument(documentID)) return;
        note("close " + session.picture.documents.at(documentID).path);
        session.ask({.command = Command::close, .documentID = documentID});
        session.picture.documents.erase(documentID);
    }
    void requestOne() {
        static constexpr Command commands[] = {Command::createWorkspaceFile, Command::createWorkspaceFolder,
                                               Command::renameWorkspaceItem, Command::moveWorkspaceItem,
                                               Command::copyWorkspaceItem,   Command::duplicateWorkspaceItem,
                                               Command::trashWorkspaceItem,  Command::deleteWorkspaceItem};
        EditorDocumentDaemonRequest request{
            .command = commands[below(std::size(commands))], .rootPath = session.root, .path = item()};
        if (request.command != Command::duplicateWorkspaceItem) request.destinationPath = item();
        note(std::string(nameOf(request.command)) + ' ' + *request.path + " > " + request.destinationPath.value_or(""));
        session.ask(std::move(request));
    }

    WatchedSession& session;
    std::mt19937_64 random;
    std::error_code ignored;
    int textCount = 0;
};

TEST(Convergence, TheClientKnowsInTheEndWhatIsOnTheDisk) {
    const std::uint64_t seed = number("WATCH_CONVERGENCE_SEED", std::random_device()());
    const std::uint64_t operations = number("WATCH_CONVERGENCE_OPERATIONS", 400);
    std::cout << "seed " << seed << '\n';
    WatchedSession session("a b/a b/b c/d/e");
    Changes changes(session, seed);
    std::mt19937_64 lengths(seed);
    for (std::uint64_t done = 0; done < operations;) {
        changes.log.clear();
        for (std::uint64_t count = 1 + lengths() % 30; count > 0; --count, ++done) changes.makeOne();
        const std::string difference = session.differenceInTheEnd();
        ASSERT_EQ(difference, "") << "seed " << seed << ", after " << done << " operations, the last of them\n"
                                  << changes.log;
    }
}

} // namespace
