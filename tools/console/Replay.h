#pragma once

#include <string>

#include "tools/console/ConsoleView.h"
#include "tools/console/Recording.h"

enum class ShellCommands { refused, run };

// Holds a recorded conversation again with another daemon, in a folder that is as the recorded one was at first, and
// shows what it says otherwise. Identifiers and times may differ; an event may come later, but not be missing.
class Replay {
public:
    Replay(const RecordedSession& session, const std::string& executable, const std::string& folderPath,
           ShellCommands shellCommands, ConsoleView& view);

    // How many lines of the one or the other have no counterpart.
    std::size_t run();

private:
    const RecordedSession& session;
    const std::string executable;
    const std::string folderPath;
    const ShellCommands shellCommands;
    ConsoleView& view;
};
