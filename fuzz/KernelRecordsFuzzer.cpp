// A watcher of a disk in memory. What happens on the disk, and when the watcher is told, follows from the input, and in
// the end it has told everything. With the first byte odd it is also handed records that no kernel wrote; then it need
// only live and come to rest.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/Require.h"
#include "tests/platform/watch/WatchGame.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 2048) return 0;
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const bool isDeceived = input[0] & 1;
    const WatchGame::Troubles troubles{
        .lostEvents = (input[0] & 2) != 0, .mounts = (input[0] & 4) != 0, .fewWatches = (input[0] & 8) != 0};
    input.remove_prefix(1);
    // The end of the input is what nobody wrote.
    std::string_view deception;
    if (isDeceived) {
        deception = input.substr(input.size() / 2);
        input.remove_suffix(deception.size());
    }
    std::size_t position = 0;
    const auto choose = [&]() -> std::uint64_t {
        return position < input.size() ? static_cast<unsigned char>(input[position++]) : 0;
    };
    WatchGame game(choose, troubles);
    do {
        game.playRound();
        require(isDeceived || game.complaint().empty(), game.complaint());
        game.deceive(deception.substr(0, 48));
        deception.remove_prefix(std::min<std::size_t>(deception.size(), 48));
    } while (position < input.size() || !deception.empty());
    // Who is told that a watch has ended must believe it.
    const std::size_t watchesLeftBehind = game.watchesLeftBehind();
    require(isDeceived || watchesLeftBehind == 0, "watches were left behind");
    return 0;
}
