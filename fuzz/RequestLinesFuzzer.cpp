// Requests, changes by other programs, notifications and failures of the disk, as a script with one step on each line
// and its parts divided by tabs. What is no step is given to the daemon as it stands. So a fuzzer comes to whole
// conversations by changing single letters.
//
//     a to n, path, destination or name or text, root or document or version
//                                       a request; the letter is the place of its command in the table of commands
//     !w path text, !k path, !l path target, !r path, !m path newPath
//                                       another program writes, makes a folder or a link, removes, renames; with a
//                                       capital letter the system does not tell
//     !n path flags fileNumber          the system tells of something that did not happen
//     !s                                time passes
//     !f operation count                the disk fails at the call

#include "fuzz/FuzzedDaemon.h"
#include "fuzz/Split.h"

namespace {

constexpr std::size_t stepLimit = 40;

// Those that can fail; the others answer no instead.
constexpr FileOperation operations[] = {
    FileOperation::attributesOfItem,   FileOperation::contentsOfFile, FileOperation::contentsOfDirectory,
    FileOperation::createDirectory,    FileOperation::createFile,     FileOperation::currentDirectoryPath,
    FileOperation::prepareReplacement, FileOperation::moveItem,       FileOperation::copyItem,
    FileOperation::trashItem,          FileOperation::removeItem,
};

std::optional<std::string> part(const std::vector<std::string>& parts, std::size_t index) {
    return index < parts.size() ? std::optional(parts[index]) : std::nullopt;
}

std::uint32_t number(const std::vector<std::string>& parts, std::size_t index) {
    std::uint32_t value = 0;
    for (const char digit : part(parts, index).value_or("")) value = value * 10 + (static_cast<unsigned>(digit) & 15);
    return value;
}

void request(FuzzedDaemon& daemon, const std::vector<std::string>& parts) {
    using Command = EditorDocumentRequestCommand;
    EditorDocumentDaemonRequest made{.command = static_cast<Command>(parts[0][0] - 'a')};
    if (made.command == Command::save || made.command == Command::close) {
        made.documentID = "document-" + part(parts, 1).value_or("");
        made.text = part(parts, 2);
        const auto known = daemon.client.versionByDocumentID.find(*made.documentID);
        if (part(parts, 3)) made.expectedVersion = number(parts, 3);
        if (!part(parts, 3) && known != daemon.client.versionByDocumentID.end()) made.expectedVersion = known->second;
    } else {
        made.rootPath = part(parts, 3).value_or("/w");
        made.path = part(parts, 1);
        if (made.command == Command::createWorkspaceFile || made.command == Command::createWorkspaceFolder)
            made.name = part(parts, 2);
        else
            made.destinationPath = part(parts, 2);
    }
    daemon.send(std::move(made));
}

void happening(FuzzedDaemon& daemon, const std::vector<std::string>& parts) {
    const char kind = parts[0].size() > 1 ? parts[0][1] : ' ';
    const std::string path = part(parts, 1).value_or("/w/x.txt");
    const std::string other = part(parts, 2).value_or("/w/new");
    const bool isTold = (kind & 0x20) != 0;
    switch (kind | 0x20) {
        case 'w':
            return daemon.write(path, other, isTold);
        case 'k':
            return daemon.makeDirectory(path, isTold);
        case 'l':
            return daemon.link(path, other, isTold);
        case 'r':
            return daemon.remove(path, isTold);
        case 'm':
            return daemon.rename(path, other, isTold);
        case 'n':
            return daemon.notify(path, number(parts, 2), number(parts, 3));
        case 's':
            return daemon.settle();
        case 'f':
            return daemon.failLater(operations[number(parts, 1) % std::size(operations)],
                                    static_cast<int>(number(parts, 2) % 20) + 1);
        default:
            return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto steps = split({reinterpret_cast<const char*>(data), size}, '\n');
    if (steps.size() > stepLimit) return 0;
    FuzzedDaemon daemon;
    for (const std::string& step : steps) {
        const auto parts = split(step, '\t');
        if (parts[0].size() == 1 && parts[0] >= "a" && parts[0] <= "n")
            request(daemon, parts);
        else if (step.starts_with('!'))
            happening(daemon, parts);
        else
            daemon.sendLine(step);
    }
    daemon.requireConvergence();
    return 0;
}
