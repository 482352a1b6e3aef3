#include "tools/console/LineEditor.h"

#include <cstdio>
// Below, because readline's header needs the one above.
#include <readline/history.h>
#include <readline/readline.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "tools/console/CommandWords.h"

namespace {

constexpr int keptHistory = 1000;

// What readline's functions, which take no context, work on.
struct State {
    LineEditor::Hooks hooks;
    std::string historyPath;
    std::vector<std::string> candidates{};
};
std::unique_ptr<State> state;

void takeLine(char* line) {
    if (!line) return state->hooks.takeLine(std::nullopt);
    const std::string text(line);
    std::free(line);
    if (!text.empty()) ::add_history(text.c_str());
    state->hooks.takeLine(text);
}

char* nextCandidate(const char*, int index) {
    const auto position = static_cast<std::size_t>(index);
    return position < state->candidates.size() ? ::strdup(state->candidates[position].c_str()) : nullptr;
}

char** completeWord(const char* word, int start, int) {
    ::rl_attempted_completion_over = 1; // never names of the current directory
    const std::string_view before(::rl_line_buffer, static_cast<std::size_t>(start));
    state->candidates = state->hooks.complete(before, word);
    if (state->candidates.empty()) return nullptr;
    if (state->candidates.front().ends_with('/')) ::rl_completion_append_character = '\0';
    return ::rl_completion_matches(word, nextCandidate);
}

void showCandidates(char** matches, int count, int) {
    state->hooks.showCandidates({matches + 1, matches + 1 + count}); // the first is what they have in common
}

int isQuoted(char* line, int position) {
    return isEscapedAt(line, static_cast<std::size_t>(position));
}

int scrollLogUp(int, int) {
    state->hooks.scrollLog(1);
    return 0;
}
int scrollLogDown(int, int) {
    state->hooks.scrollLog(-1);
    return 0;
}
int scrollTreeUp(int, int) {
    state->hooks.scrollTree(-1);
    return 0;
}
int scrollTreeDown(int, int) {
    state->hooks.scrollTree(1);
    return 0;
}
int clearLine(int, int) {
    ::rl_replace_line("", 1);
    ::rl_point = 0;
    return 0;
}

// The screen belongs to somebody else.
void drawNothing() {}
void prepareNothing(int) {}

void bindKeys() {
    ::rl_bind_keyseq("\\e[5~", scrollLogUp);
    ::rl_bind_keyseq("\\e[6~", scrollLogDown);
    ::rl_bind_keyseq("\\e[1;3A", scrollTreeUp);
    ::rl_bind_keyseq("\\e[1;3B", scrollTreeDown);
    ::rl_bind_key(0x03, clearLine); // Control-C
}

} // namespace

LineEditor::LineEditor(Hooks hooks, const std::string& historyPath) {
    state = std::make_unique<State>(State{std::move(hooks), historyPath});
    ::rl_readline_name = "EditorDocumentConsole";
    ::rl_catch_signals = 0;
    ::rl_catch_sigwinch = 0;
    ::rl_change_environment = 0;
    ::rl_redisplay_function = drawNothing;
    ::rl_prep_term_function = prepareNothing;
    ::rl_deprep_term_function = drawNothing;
    ::rl_attempted_completion_function = completeWord;
    ::rl_completion_display_matches_hook = showCandidates;
    ::rl_basic_word_break_characters = " ";
    ::rl_completer_word_break_characters = const_cast<char*>(" ");
    // readline asks whether a blank is escaped only where there are quotes; it is not to know ours, since a candidate
    // is written with backslashes.
    ::rl_completer_quote_characters = "\x01";
    ::rl_char_is_quoted_p = isQuoted;
    ::rl_variable_bind("show-all-if-ambiguous", "on"); // the user's own settings come after it
    ::rl_initialize();
    ::rl_variable_bind("bell-style", "none");
    ::rl_variable_bind("enable-bracketed-paste", "off");
    bindKeys();
    ::using_history();
    ::stifle_history(keptHistory);
    ::read_history(historyPath.c_str());
    ::rl_callback_handler_install("", takeLine);
}

// A history that cannot be kept is no reason to complain.
LineEditor::~LineEditor() {
    ::rl_callback_handler_remove();
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(state->historyPath).parent_path(), ignored);
    ::write_history(state->historyPath.c_str());
    state.reset();
}

void LineEditor::readKey() {
    ::rl_callback_read_char();
}

std::string_view LineEditor::text() const {
    return {::rl_line_buffer, static_cast<std::size_t>(::rl_end)};
}

std::size_t LineEditor::cursor() const {
    return static_cast<std::size_t>(::rl_point);
}
