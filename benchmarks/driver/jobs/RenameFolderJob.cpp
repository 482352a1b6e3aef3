#include <cstdio>
#include <stdexcept>

#include "driver/Jobs.h"
#include "driver/Requests.h"
#include "driver/TemporaryTree.h"

namespace {

using Clock = std::chrono::steady_clock;

void renameFolder(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) throw std::runtime_error("rename");
}

// The listing of the root and the mutation, and nothing else.
Seconds renameTold(Program& daemon, const std::string& from, const std::string& to) {
    renameFolder(from, to);
    const Clock::time_point begin = Clock::now();
    daemon.line();
    if (daemon.line().find("\"kind\":\"renamed\"") == std::string_view::npos) throw std::runtime_error("no rename");
    const Seconds time = Clock::now() - begin;
    if (const auto line = daemon.lineWithin(Seconds{0.15})) throw std::runtime_error("a third event");
    return time;
}

void requireNewPath(Program& daemon, const std::string& folder) {
    makeFile(folder + "/later");
    if (daemon.line().find(folder + "/later") == std::string_view::npos) throw std::runtime_error("the old path");
    std::remove((folder + "/later").c_str());
    daemon.line();
}

Seconds renameByLimit(Program& limit, const std::string& from, const std::string& to) {
    renameFolder(from, to);
    const Clock::time_point begin = Clock::now();
    for (int events = 0; events < 2; ++events) limit.line();
    const Seconds time = Clock::now() - begin;
    while (limit.lineWithin(Seconds{0.02})) {
    }
    return time;
}

} // namespace

Measurements measureRenameFolder(const Programs& programs, std::size_t fewDescendants, std::size_t manyDescendants,
                                 int turns) {
    const TemporaryTree tree;
    const std::string root = tree.path() + "/project";
    makeFolder(root);
    const std::string small = tree.makeFolders("project/small", fewDescendants * 10 / 11, fewDescendants / 11)[0];
    const std::string large = tree.makeFolders("project/large", manyDescendants * 10 / 11, manyDescendants / 11)[0];
    const auto job = [](std::size_t count) { return "rename a folder with " + grouped(count) + " descendants"; };
    Measurement few{.job = job(fewDescendants), .unit = "ms"};
    Measurement many{.job = job(manyDescendants), .unit = "ms"};
    Measurement both{
        .job = "  the large one against the small one", .unit = "ms", .target = {TargetKind::ratioAtMost, 1.25}};
    {
        Program daemon({programs.daemon});
        daemon.ask(openWorkspaceRequest(root));
        daemon.waitUntilQuiet(Seconds{0.3});
        for (int turn = 0; turn < turns; ++turn) {
            for (const auto& [folder, measurement] : {std::pair{small, &few}, std::pair{large, &many}}) {
                const std::string renamed = folder + "-renamed";
                measurement->daemon.push_back(milliseconds(renameTold(daemon, folder, renamed)));
                requireNewPath(daemon, renamed);
                renameTold(daemon, renamed, folder);
            }
        }
        few.usage = many.usage = both.usage = daemon.usage();
    }
    Program limit(programs.limit("LimitWatchTree"));
    limit.ask(root + '\n');
    for (int turn = 0; turn < turns; ++turn) {
        for (const auto& [folder, measurement] : {std::pair{small, &few}, std::pair{large, &many}}) {
            measurement->limit.push_back(milliseconds(renameByLimit(limit, folder, folder + "-renamed")));
            renameByLimit(limit, folder + "-renamed", folder);
        }
    }
    both.daemon = many.daemon;
    both.limit = few.daemon;
    return {few, many, both};
}
