#pragma once

#include <string>

#include "platform/linux/Descriptor.h"
#include "tools/console/ConsoleView.h"

// The terminal in three areas, drawn by ncurses. Every text is to be printable, and is cut where its area ends.
class Screen {
public:
    enum class Style { plain, folder, command, success, failure, event, note, bar };

    // Throws a PlatformError when the terminal is of no known kind.
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    int height() const; // of the tree and of the log
    int treeWidth() const;
    int logWidth() const;

    void clear();
    void drawTreeRow(int row, Style style, const std::string& text);
    void drawLogRow(int row, Style style, const std::string& text);
    void drawBar(const std::string& text);
    void drawInput(const std::string& text, int cursorColumn);
    void show();

    // Readable when a signal has come: the size has changed, or the process is to end.
    int signalDescriptor() const;
    enum class Signal { none, resized, terminated };
    Signal takeSignal();

    // The terminal as it was before, for another program, and back.
    void leave();
    void comeBack();
};
