# Sourced by the commands in the root. Brings the machine and the build folder into the state that they need, says what
# it does on standard error only, and says nothing when there is nothing to do.

# Installs the Debian packages of packages.txt, and any others given, that are missing.
install_missing_packages() {
    local wanted missing=() package
    wanted=$(cat packages.txt)
    for package in $wanted "$@"; do
        [[ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" == installed ]] || missing+=("$package")
    done
    ((${#missing[@]})) || return 0

    local as_root=()
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null || { ! sudo -n true 2>/dev/null && ! [[ -t 0 && -t 2 ]]; }; then
            echo "Some Debian packages are missing. Please install them as root and try again:" >&2
            echo "    apt-get update && apt-get install --no-install-recommends ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]} ..." >&2
    "${as_root[@]}" apt-get update -qq >&2 </dev/null
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2 </dev/null
}

# Builds a preset of CMakePresets.json, or some targets of it. Says so only when there is something to build.
build_preset() {
    local preset=$1 plan
    shift
    [[ -f build/$preset/build.ninja ]] || cmake --preset "$preset" >/dev/null </dev/null
    plan=$(ninja -C "build/$preset" -n "$@" </dev/null) || true
    [[ $plan == *"no work to do"* ]] && return 0
    echo "Building the $preset preset ..." >&2
    ninja -C "build/$preset" --quiet "$@" >&2 </dev/null
}

# Builds one of the programs for people, with the daemon. The release leaves them out unless it is asked for them.
build_tool() {
    grep -qs '^BUILD_TOOLS:BOOL=ON$' build/release/CMakeCache.txt ||
        cmake --preset release -DBUILD_TOOLS=ON >/dev/null </dev/null
    build_preset release EditorDocumentDaemon "$1"
}
