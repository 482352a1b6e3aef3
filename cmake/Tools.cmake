# The programs for people. What they need beyond the daemon is in tools/packages.txt.
pkg_check_modules(ncursesw REQUIRED IMPORTED_TARGET ncursesw)
pkg_check_modules(readline REQUIRED IMPORTED_TARGET readline)

add_storey(5 EditorDocumentTools
    tools/PrintableText.cpp
    tools/PrintableText.h
    tools/ShellWord.h
    tools/console/CommandWords.cpp
    tools/console/CommandWords.h
    tools/console/ComparableLines.cpp
    tools/console/ComparableLines.h
    tools/console/ConsoleCommands.cpp
    tools/console/ConsoleSession.cpp
    tools/console/ConsoleSession.h
    tools/console/ConsoleView.h
    tools/console/EnvelopeSummary.cpp
    tools/console/EnvelopeSummary.h
    tools/console/LineEditor.cpp
    tools/console/LineEditor.h
    tools/console/PlainConsole.cpp
    tools/console/PlainConsole.h
    tools/console/Recording.cpp
    tools/console/Recording.h
    tools/console/Replay.cpp
    tools/console/Replay.h
    tools/console/Screen.cpp
    tools/console/Screen.h
    tools/console/ScreenConsole.cpp
    tools/console/ScreenConsole.h
    tools/console/ShellCommand.cpp
    tools/console/ShellCommand.h
    tools/console/WorkspaceTree.cpp
    tools/console/WorkspaceTree.h
    tools/doctor/Abilities.cpp
    tools/doctor/Abilities.h
    tools/doctor/Finding.h
    tools/doctor/FolderSurvey.cpp
    tools/doctor/FolderSurvey.h
    tools/doctor/WatchUsage.cpp
    tools/doctor/WatchUsage.h
)
target_link_libraries(EditorDocumentTools
    PUBLIC EditorDocumentRecords EditorDocumentText
    PRIVATE ICU::uc PkgConfig::ncursesw PkgConfig::readline
)

add_executable(EditorDocumentConsole tools/console/main.cpp)
target_link_libraries(EditorDocumentConsole PRIVATE EditorDocumentTools)

add_executable(EditorDocumentDoctor tools/doctor/main.cpp)
target_link_libraries(EditorDocumentDoctor PRIVATE EditorDocumentTools)
