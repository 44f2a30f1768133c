#!/usr/bin/env bash
# Installs the tree, moves what was installed, and builds, tests and runs services against it.
. "$(dirname "$0")/common.sh"

# Outside of the tree, so that nothing is found in it by chance.
outside=$(mktemp -d)
trap 'rm -rf "$outside"' EXIT
export CCACHE_BASEDIR=$outside

rm -rf "$work" "$package"
mkdir -p "$work"
cmake --install "$build" --prefix "$outside/installed" >/dev/null
kept=$package
package=$outside/moved
mv "$outside/installed" "$package"

# Neither the tree nor the folder of the installation is named, and no header needs another library's.
find "$package" -name vorsensor -type f -o -name '*.so' | while read -r file; do
    if readelf -d "$file" | grep -E 'R(UN)?PATH' | grep -v '\[\$ORIGIN'; then
        fail "$file looks for libraries in a fixed place"
    fi
done
if grep -rIlF -e "$top" -e "$outside/installed" "$package"; then
    fail "An installed file names the tree or the folder of the installation"
fi
if grep -rn '#include <' "$package/include" "$package/share/VorCnLib/testing" | grep -vE '<([a-z_]+|nlohmann/[a-z_]+\.hpp)>'; then
    fail "An installed header needs another library"
fi

# What the documentation shows is what is built here.
python3 - "$top" first-service/CMakeLists.txt first-service/HelloService.cpp first-service/HelloServiceTest.cpp \
    provider-service/ProviderService.cpp echo-service/EchoService.cpp <<'PYTHON'
import pathlib, sys
top = pathlib.Path(sys.argv[1])
text = (top / "Docs/your-first-service.md").read_text()
for name in sys.argv[2:]:
    if (top / "Docs/examples" / name).read_text() not in text:
        sys.exit("Docs/your-first-service.md doesn't show Docs/examples/" + name + " as it is")
PYTHON

cp -r "$top/Docs/examples/first-service" "$outside/first"
cp -r "$top/Docs/examples/provider-service" "$outside/provider"
cp -r "$top/Docs/examples/echo-service" "$outside/echo"
cp -r "$package/share/VorCnLib/examples/Sample" "$outside/sample"
for project in first provider echo sample; do
    build_project "$outside/$project" "$package"
done
ctest --test-dir "$outside/first/build" --output-on-failure --no-tests=error
ctest --test-dir "$outside/sample/build" --output-on-failure --no-tests=error

sensor "$package/bin/vorsensor"
contains "$told" '^Service modbus \(Modbus TCP\): Running at '
sensor "$package/bin/vorsensor" --plugins "$outside/first/build/plugins" --plugins "$outside/sample/build/plugins" \
    --plugins "$outside/provider/build/plugins" --plugins "$outside/echo/build/plugins" \
    --enable hello --enable sample --enable provider --enable echo \
    --set hello.greeting=Moin --set provider.greeting=Servus --set echo.port=0
contains "$told" '^Service hello \(Hello\): Running$'
contains "$told" '^Service sample \(Sample\): Running$'
contains "$told" '^Service provider \(Provider\): Running$'
contains "$told" '^Service echo \(Echo\): Running at tcp://127\.0\.0\.1:'
contains "$told" 'Moin'
contains "$told" 'Servus'

# For the tests that begin with the package.
mv "$package" "$kept"
