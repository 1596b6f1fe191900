#!/usr/bin/env bash
# Keeps the three copies of the interface in step, through Debian's AIDL compiler:
#   frozen   aidl/ is frozen version 1 unchanged (API dumps compared);
#   backend  host/trox is, method by method and field by field, what the compiler makes of aidl/
#            (ndk_shape.pl summarises both; codes follow declaration order).
# Usage: interface_drift.sh frozen|backend SOURCE_DIR WORK_DIR
set -euo pipefail
[ $# -eq 3 ] || { echo "usage: $0 frozen|backend SOURCE_DIR WORK_DIR" >&2; exit 2; }
mode=$1 src=$2 work=$3
here=$(cd "$(dirname "$0")" && pwd)
aidl=${AIDL:-aidl}
command -v "$aidl" >/dev/null || { echo "interface_drift: no '$aidl' (scripts/install-deps)" >&2; exit 1; }
current=$src/aidl
frozen=$src/aidl/aidl_api/vendor.vexal.hardware.trox/1
rm -rf "$work"
mkdir -p "$work"

sources() { (cd "$1" && find vendor -name '*.aidl' | LC_ALL=C sort); }

# copy NAME ROOT: ROOT's vendor/**/*.aidl into $work/NAME.in, without @VintfStability, which this
# compiler predates; where the annotation stood is recorded in $work/NAME.vintf instead.
copy() {
    local name=$1 root=$2 file
    mkdir -p "$work/$name.in"
    : >"$work/$name.vintf"
    for file in $(sources "$root"); do
        mkdir -p "$work/$name.in/$(dirname "$file")"
        sed 's/@VintfStability//' "$root/$file" >"$work/$name.in/$file"
        echo "$file $(grep -c '@VintfStability' "$root/$file" || true)" >>"$work/$name.vintf"
    done
}

# dump NAME ROOT: the API of ROOT's interface, normalised by the compiler, in $work/NAME.
dump() {
    copy "$1" "$2"
    (cd "$work/$1.in" && "$aidl" --dumpapi --structured --out="$work/$1" -I . $(sources .))
}

case $mode in
frozen)
    dump current "$current"
    dump frozen "$frozen"
    if ! diff -ru "$work/frozen" "$work/current" || ! diff -u "$work/frozen.vintf" "$work/current.vintf"; then
        echo "interface_drift: aidl/ is not frozen version 1; a change needs a new version" >&2
        exit 1
    fi
    echo "interface_drift: aidl/ is frozen version 1 ($(sources "$current" | wc -l) files)"
    ;;
backend)
    dump current "$current"
    (cd "$work/current.in" && "$aidl" --lang=ndk --structured --version=1 -I . \
        -o "$work/ndk/src" -h "$work/ndk/include" $(sources .))
    perl "$here/ndk_shape.pl" --number-by-order "$work/current" "$work/ndk/include" "$work/ndk/src" \
        >"$work/expected" || { echo "interface_drift: cannot read the compiler's backend" >&2; exit 1; }
    perl "$here/ndk_shape.pl" "$work/current" "$src/host/trox/include" "$src/host/trox/src" \
        >"$work/actual" || { echo "interface_drift: host/trox differs from aidl/" >&2; exit 1; }
    if ! diff -u "$work/expected" "$work/actual"; then
        echo "interface_drift: host/trox differs from aidl/ (- interface, + host/trox)" >&2
        exit 1
    fi
    echo "interface_drift: host/trox matches aidl/ ($(wc -l <"$work/expected") facts)"
    ;;
*)
    echo "interface_drift: unknown mode '$mode'" >&2
    exit 2
    ;;
esac
