#!/usr/bin/env bash
# A plug-in that was compiled against other headers than the sensor is refused, with both versions.
. "$(dirname "$0")/common.sh"

rm -rf "$work"
mkdir -p "$work"
cp -r "$package" "$work/changed"
cp -r "$package/share/VorCnLib/examples/Sample" "$work/sample"
header=$work/changed/include/VorControl/Control/IControlHost.h
sed -i '0,/virtual /s//virtual void OneMore() {}\n    virtual /' "$header"
grep -q OneMore "$header" || fail "There is no virtual function in $header"
build_project "$work/sample" "$work/changed" >"$work/build.log" || fail "$(cat "$work/build.log")"

sensor "$package/bin/vorsensor" --plugins "$work/sample/build/plugins"
contains "$told" '^Services: none$'
versions=$(sed -nE 's/^.*sample.so is refused: .*expected platform version ([^ ]+), it was built for "([^ ]+)"$/\1 \2/p' <<<"$told")
read -r expected found <<<"$versions" || fail "The plug-in isn't refused:" "$told"
contains "$expected" '^1\.0\.0\.0\+[0-9a-f]{16}$'
contains "$found" '^1\.0\.0\.0\+[0-9a-f]{16}$'
[ "$expected" != "$found" ] || fail "$told"
