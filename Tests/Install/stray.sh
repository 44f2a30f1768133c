#!/usr/bin/env bash
# A source below Tests/ that no program takes is a test that nobody runs: the tree isn't configured with it.
. "$(dirname "$0")/common.sh"

rm -rf "$work"
mkdir -p "$work/tree"
git -c safe.directory='*' -C "$top" ls-files -z |
    tar -C "$top" --null -T - --ignore-failed-read -c | tar -C "$work/tree" -x

# refuses FILE PATTERN: with that file, configuring ends with an error that matches.
refuses() {
    local errors
    mkdir -p "$work/tree/$(dirname "$1")"
    touch "$work/tree/$1"
    if errors=$(cmake -S "$work/tree" -B "$work/build" "${options[@]}" -DVOR_TESTS=ON -DVOR_BENCH=OFF 2>&1); then
        fail "Configured with $1:" "$errors"
    fi
    contains "$(tr -s ' \n' ' ' <<<"$errors")" "$2"
    rm -r "$work/tree/$(dirname "$1")"
}

refuses Tests/Stray/X.cpp 'No program takes [^ ]*/Tests/Stray/X\.cpp'
refuses Tests/Stray/XTest.cpp 'Tests/Stray has tests, and nothing says here what they test'
cmake -S "$work/tree" -B "$work/build" "${options[@]}" -DVOR_TESTS=ON -DVOR_BENCH=OFF
