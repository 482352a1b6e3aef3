#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <system_error>

#include "tests/process/WatchedSession.h"

// Random changes in the tree of a session, by the client and by other programs. What fails is no harm.
class RandomChanges {
public:
    RandomChanges(WatchedSession& watchedSession, std::uint64_t seed) : session(watchedSession), random(seed) {}

    void makeOne();
    // By other programs alone.
    void makeOneOutside();
    // The items to which the daemon gave names. Nothing else would, and in a tree that grows without end memory does.
    void removeNumbered();

    std::size_t below(std::size_t count) { return random() % count; }
    std::string text() { return "text " + std::to_string(++textCount) + '\n'; }
    // Few names, so that they meet again.
    std::string name() { return std::string(1, static_cast<char>('a' + below(6))); }
    std::string folder();
    std::string item() { return folder() + '/' + name(); }
    EditorDocumentDaemonRequest request();

    void note(const std::string& what) { log += what + '\n'; }
    std::string log;

private:
    // Other programs.
    void writeOne();
    void appendOne();
    void write(const std::string& path, std::ios::openmode mode);
    void makeFolder();
    void renameOne();
    void rename(const std::string& from, const std::string& to);
    void removeOne();
    void replaceOne();
    void keepBackup();
    void copyTree();
    void moveOutAndIn();
    void swapFolders();
    void linkOne();

    // The client.
    void expandOne();
    void openOne();
    void saveOne();
    void closeOne();
    void requestOne();
    const ClientPicture::Document* anyDocument(std::string& documentID);

    WatchedSession& session;
    std::mt19937_64 random;
    std::error_code ignored;
    int textCount = 0;
};
