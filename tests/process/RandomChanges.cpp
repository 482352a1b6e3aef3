#include "tests/process/RandomChanges.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

// Also where it is not permitted to look.
fs::file_type typeOf(const std::string& path) {
    std::error_code ignored;
    return fs::symlink_status(path, ignored).type();
}

bool isFree(const std::string& path) {
    return typeOf(path) == fs::file_type::not_found;
}

} // namespace

void RandomChanges::makeOne() {
    using Change = void (RandomChanges::*)();
    static constexpr Change changes[] = {&RandomChanges::expandOne, &RandomChanges::expandOne,
                                         &RandomChanges::openOne,   &RandomChanges::saveOne,
                                         &RandomChanges::closeOne,  &RandomChanges::requestOne};
    if (below(10) < 7) return makeOneOutside();
    (this->*changes[below(std::size(changes))])();
}

void RandomChanges::makeOneOutside() {
    using Change = void (RandomChanges::*)();
    static constexpr Change changes[] = {
        &RandomChanges::writeOne,    &RandomChanges::writeOne,  &RandomChanges::appendOne,
        &RandomChanges::makeFolder,  &RandomChanges::renameOne, &RandomChanges::renameOne,
        &RandomChanges::renameOne,   &RandomChanges::removeOne, &RandomChanges::replaceOne,
        &RandomChanges::keepBackup,  &RandomChanges::copyTree,  &RandomChanges::moveOutAndIn,
        &RandomChanges::swapFolders, &RandomChanges::linkOne,
    };
    (this->*changes[below(std::size(changes))])();
}

std::string RandomChanges::folder() {
    std::string path = session.root;
    for (std::size_t depth = below(4); depth > 0; --depth) {
        const std::string next = path + '/' + name();
        if (typeOf(next) == fs::file_type::directory) path = next;
    }
    return path;
}

void RandomChanges::writeOne() {
    write(item(), std::ios::trunc);
}

void RandomChanges::appendOne() {
    write(item(), std::ios::app);
}

void RandomChanges::write(const std::string& path, std::ios::openmode mode) {
    note("write " + path + ", " + std::to_string(textCount + 1));
    if (fs::is_regular_file(fs::status(path, ignored)) || isFree(path))
        std::ofstream(path, std::ios::binary | mode) << text();
}

void RandomChanges::makeFolder() {
    const std::string path = item();
    note("mkdir " + path);
    fs::create_directory(path, ignored);
}

void RandomChanges::renameOne() {
    rename(item(), item());
}

void RandomChanges::rename(const std::string& from, const std::string& to) {
    note("rename " + from + " > " + to);
    fs::rename(from, to, ignored);
}

void RandomChanges::removeOne() {
    const std::string path = item();
    note("remove " + path);
    fs::remove_all(path, ignored);
}

void RandomChanges::replaceOne() {
    const std::string path = item();
    note("replace " + path + ", " + std::to_string(textCount + 1));
    std::ofstream(path + ".new", std::ios::binary) << text();
    fs::rename(path + ".new", path, ignored);
    fs::remove(path + ".new", ignored);
}

void RandomChanges::keepBackup() {
    const std::string path = item();
    note("save with backup " + path + ", " + std::to_string(textCount + 1));
    if (typeOf(path) != fs::file_type::regular) return;
    fs::rename(path, path + '~', ignored);
    std::ofstream(path, std::ios::binary) << text();
}

void RandomChanges::copyTree() {
    const std::string from = folder();
    const std::string to = item();
    note("copy " + from + " > " + to);
    if (to.starts_with(from) || !isFree(to)) return;
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, ignored);
}

void RandomChanges::moveOutAndIn() {
    if (below(2) == 0) {
        fs::remove_all(session.directory.path("outside0"), ignored);
        rename(item(), session.directory.path("outside0"));
    } else {
        rename(session.directory.path("outside" + std::to_string(below(2))), item());
    }
}

void RandomChanges::swapFolders() {
    const std::string left = item();
    const std::string right = item();
    if (left.starts_with(right) || right.starts_with(left)) return;
    note("swap");
    rename(left, session.directory.path("swapped"));
    rename(right, left);
    rename(session.directory.path("swapped"), right);
    fs::remove_all(session.directory.path("swapped"), ignored);
}

void RandomChanges::linkOne() {
    const std::string path = item();
    const std::string target = name();
    note("link " + path + " > " + target);
    fs::create_symlink(target, path, ignored);
}

void RandomChanges::removeNumbered() {
    std::vector<std::string> numbered;
    for (fs::recursive_directory_iterator each(session.root, ignored), end; !ignored && each != end;
         each.increment(ignored)) {
        const std::string found = each->path().filename();
        if (found.starts_with("untitled") || found.find(" copy") != found.npos) numbered.push_back(each->path());
    }
    for (const std::string& path : numbered) fs::remove_all(path, ignored);
}

void RandomChanges::expandOne() {
    const std::string path = folder();
    if (path != session.root && !session.picture.folders.contains(path.substr(0, path.rfind('/')))) return;
    note("expand " + path);
    session.ask({.command = Command::loadWorkspaceChildren, .rootPath = session.root, .path = path});
}

void RandomChanges::openOne() {
    const std::string path = item();
    note("open " + path);
    session.ask({.command = Command::open, .path = path});
}

const ClientPicture::Document* RandomChanges::anyDocument(std::string& documentID) {
    const auto& documents = session.picture.documents;
    if (documents.empty()) return nullptr;
    const auto chosen = std::next(documents.begin(), static_cast<std::ptrdiff_t>(below(documents.size())));
    documentID = chosen->first;
    return &chosen->second;
}

void RandomChanges::saveOne() {
    std::string documentID;
    const auto* document = anyDocument(documentID);
    if (!document) return;
    note("save " + document->path + ", " + std::to_string(textCount + 1));
    session.ask(
        {.command = Command::save, .documentID = documentID, .text = text(), .expectedVersion = document->version});
}

void RandomChanges::closeOne() {
    std::string documentID;
    if (session.picture.documents.size() < 4 || !anyDocument(documentID)) return;
    note("close " + session.picture.documents.at(documentID).path);
    session.close(documentID);
}

void RandomChanges::requestOne() {
    session.ask(request());
}

EditorDocumentDaemonRequest RandomChanges::request() {
    static constexpr Command commands[] = {Command::createWorkspaceFile, Command::createWorkspaceFolder,
                                           Command::renameWorkspaceItem, Command::moveWorkspaceItem,
                                           Command::copyWorkspaceItem,   Command::duplicateWorkspaceItem,
                                           Command::trashWorkspaceItem,  Command::deleteWorkspaceItem};
    EditorDocumentDaemonRequest request{
        .command = commands[below(std::size(commands))], .rootPath = session.root, .path = item()};
    if (request.command != Command::duplicateWorkspaceItem) request.destinationPath = item();
    note(std::string(nameOf(request.command)) + ' ' + *request.path + " > " + request.destinationPath.value_or(""));
    return request;
}
