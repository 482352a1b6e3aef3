# Installs the packages of a folder into a root that holds nothing but what they say they depend on, tries what they
# brought there, and removes them. Arguments: the folder of the packages, and an empty one for the root.
set -euo pipefail
packages=$1 root=$2
export LC_ALL=C.UTF-8

fail() {
    echo "$*" >&2
    exit 1
}

# The names in a list of dependencies.
names() { tr ',|' '\n\n' | sed -E 's/^ *//;s/[ :(].*//;/^$/d'; }

# Every package that the given ones need, of those installed here.
closure() {
    local -A seen=()
    local waiting=("$@") name
    while ((${#waiting[@]})); do
        name=${waiting[0]}
        waiting=("${waiting[@]:1}")
        [[ -z ${seen[$name]:-} ]] || continue
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null) == installed* ]] || continue
        seen[$name]=yes
        mapfile -t -O ${#waiting[@]} waiting < <(
            dpkg-query -W -f '${Pre-Depends}, ${Depends}\n' "$name" | names
        )
    done
    printf '%s\n' "${!seen[@]}" | sort
}

mapfile -t needed < <(
    for package in "$packages"/*.deb; do dpkg-deb -f "$package" Depends; done | names | sort -u
)
mapfile -t installed < <(closure "${needed[@]}")

mkdir -p "$root"/usr/{bin,lib,lib64,sbin} "$root"/var/lib/dpkg/{info,updates} "$root"/{root,tmp}
for folder in bin lib lib64 sbin; do ln -s "usr/$folder" "$root/$folder"; done
dpkg-query -s "${installed[@]}" >"$root/var/lib/dpkg/status"
dpkg-query -W -f '${binary:Package}\n' "${installed[@]}" |
    while read -r package; do : >"$root/var/lib/dpkg/info/$package.list"; done
dpkg-query -L "${installed[@]}" | grep -E '^(/usr)?/(lib|lib64)/.*\.so' | sort -u |
    while read -r file; do [[ -d $file && ! -L $file ]] || echo "${file#/}"; done |
    tar -C / --hard-dereference -cf - --no-recursion -T - | tar -C "$root" -xf -
find "$root" -mindepth 1 -not -path "$root/var/*" | sort >"$root.before"

dpkg --root="$root" --log=/dev/null --install "$packages"/*.deb >/dev/null

chroot=$(command -v chroot)
inside() { env -i PATH=/usr/bin HOME=/root LC_ALL=C.UTF-8 "$chroot" "$root" "$@"; }
answer=$(echo '{"requestID":"1","command":"openWorkspace","rootPath":"/usr/bin"}' | inside EditorDocumentDaemon)
[[ $answer == *'"success":true'*EditorDocumentConsole* ]] || fail "the daemon answers: $answer"
printf 'caf\xe9\n' >"$root/tmp/menu.txt"
shown=$(echo 'open menu.txt' | inside EditorDocumentConsole /tmp)
[[ $shown == *'open menu.txt, version 1, 6 bytes'* ]] || fail "the console prints: $shown"
rm -r "$root/tmp/menu.txt"
inside EditorDocumentDoctor --help | grep -q '^usage' || fail "the doctor does not start"

for program in "$root"/usr/bin/*; do
    [[ -s $root/usr/share/man/man1/${program##*/}.1 ]] || fail "$program has no page"
done
for page in "$root"/usr/share/man/*/*; do
    complaints=$(groff -man -Tutf8 -ww -z "$page" 2>&1)
    [[ -z $complaints ]] || fail "$page: $complaints"
done

completed() {
    bash -c 'source "$0"; name=${0##*/}; COMP_WORDS=("$name" "$@"); COMP_CWORD=$#; "_$name"; echo "${COMPREPLY[*]}"' \
        "$root/usr/share/bash-completion/completions/$1" "${@:2}"
}
[[ $(completed EditorDocumentConsole --re) == '--record --replay' ]] || fail "the console's options are not completed"
[[ $(completed EditorDocumentConsole --record "$root/va") == "$root/var" ]] || fail "a file is not completed"
[[ $(completed EditorDocumentDoctor "$root/us") == "$root/usr" ]] || fail "the doctor's folder is not completed"

dpkg --root="$root" --log=/dev/null --purge editor-document-tools editor-document-daemon libconduitshared-dev >/dev/null
find "$root" -mindepth 1 -not -path "$root/var/*" | sort >"$root.after"
left=$(comm -13 "$root.before" "$root.after")
[[ -z $left ]] || fail "this was left behind: $left"
