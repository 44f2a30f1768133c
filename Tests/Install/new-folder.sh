#!/usr/bin/env bash
# A folder below Services/ is all that a new service needs: it is built with the others, and the sensor lists and runs it.
. "$(dirname "$0")/common.sh"

rm -rf "$work"
mkdir -p "$work"
for entry in "$top"/*; do
    case $(basename "$entry") in
        build | Tests | Bench | Fuzz | Docs) ;;
        *) cp -r "$entry" "$work" ;;
    esac
done
cp -r "$work/Services/Sample" "$work/Services/Twin"
sed -i 's/SetTypeName("sample")/SetTypeName("twin")/' "$work/Services/Twin/SamplePlugin.cpp"
export CCACHE_BASEDIR=$work
cmake -S "$work" -B "$work/build" "${options[@]}" -DVOR_TESTS=OFF -DVOR_BENCH=OFF
cmake --build "$work/build" --target vorsensor services

sensor "$work/build/bin/vorsensor"
contains "$told" '^Service modbus \(Modbus TCP\): Running at '
contains "$told" '^Service twin \(Sample\): Stopped$'
sensor "$work/build/bin/vorsensor" --enable twin
contains "$told" '^Service twin \(Sample\): Running$'
