# What the tests in this folder have in common. Their arguments: the tree, its build, a folder of their own, the C++
# compiler, and more that cmake shall be given.
set -euo pipefail
top=$1 build=$2 work=$3 compiler=$4
shift 4
options=(-G Ninja "-DCMAKE_CXX_COMPILER=$compiler" "$@")
! command -v ccache >/dev/null || options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
export CCACHE_NOHASHDIR=1 CCACHE_BASEDIR=${CCACHE_BASEDIR:-$top}
package=$(dirname "$work")/moved

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

# build_project FOLDER PREFIX: builds a project against an installed package, in FOLDER/build.
build_project() {
    cmake -S "$1" -B "$1/build" "${options[@]}" "-DCMAKE_PREFIX_PATH=$2"
    cmake --build "$1/build"
}

# sensor PROGRAM ARGUMENTS...: starts the sensor, ends it once it has started; `told` gets what it printed.
sensor() {
    local line output pid ports=(--modbus-port 0 --set ascii.port=0)
    [[ " $* " != *" --plugins "* ]] || ports=()
    coproc SENSOR { exec "$1" --data "$work/data" "${ports[@]}" --http-port 0 --no-scan "${@:2}" 2>&1; }
    pid=$SENSOR_PID
    exec {output}<&"${SENSOR[0]}"
    told=
    while IFS= read -r -t 60 line <&"$output"; do
        told+=$line$'\n'
        [ "$line" != "Not scanning." ] || break
    done
    kill -TERM "$pid" || true
    told+=$(cat <&"$output")
    exec {output}<&-
    wait "$pid" || fail "The sensor ended with $?:" "$told"
}

# contains TEXT PATTERN: whether a line of the text matches.
contains() {
    grep -qE "$2" <<<"$1" || fail "Expected: $2" "$1"
}
