# Functions of ./check --all that check sources, build files and the results of the build.

SOURCE_FOLDERS="include platform errors text names crs proj creation config tools examples benchmarks fuzz tests"

sources() {
    # shellcheck disable=SC2086
    find $SOURCE_FOLDERS -name "$1" | sort
}

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

check_format() {
    say "Formatting"
    local found
    # shellcheck disable=SC2086
    { sources '*.h' && sources '*.cpp'; } | xargs clang-format --dry-run -Werror
    found=$({ sources '*.h' && sources '*.cpp'; } | xargs awk -f cmake/namespaces.awk)
    found+=$({ echo CMakeLists.txt && sources CMakeLists.txt && find cmake $SOURCE_FOLDERS -name '*.cmake'; } |
        xargs awk -f cmake/indentation.awk)
    [ -z "$found" ] || fail "$found"
}

# includes PATTERN FOLDER...: prints the lines that include an internal header from a folder that matches.
includes() {
    local pattern=$1
    shift
    grep -rnE --include='*.h' --include='*.cpp' "#include \"($pattern)/" "$@" || true
}

check_layers() {
    say "Layers"
    local found library="platform errors text names crs proj creation config"
    # shellcheck disable=SC2086
    found=$(grep -rE --include='*.h' --include='*.cpp' --exclude='*_test.cpp' '^#include ["<]' include $library |
        awk -f cmake/layers.awk)
    # shellcheck disable=SC2086
    found+=$(includes 'tests|tools' include $library | grep -v '_test\.cpp:' || true)
    # The tools read text, find its faults and release objects of PROJ with the functions of the library. They use the
    # classic interface for two directories in one process.
    found+=$(includes 'platform|errors|crs|proj|creation' tools | grep -vE '"proj/classic/(ProjHandles|ClassicProj)\.h"' ||
        true)
    found+=$(includes 'platform|errors|text|names|crs|proj|creation|config' tests/docs tests/integration tests/process)
    found+=$(includes 'platform|errors|text|names|crs|proj|creation|config|tests' examples)
    # Only the classic interface may include PROJ.
    # shellcheck disable=SC2086
    found+=$(grep -rnE --include='*.h' --include='*.cpp' '#include <proj(/|\.h)' include $library | grep -v '^proj/classic/' ||
        true)
    [ -z "$found" ] || fail "$found"
}

check_headers() {
    say "Header self-containment"
    sources '*.h' | xargs -P "$(nproc)" -I HEADER g++ -std=c++17 -Wall -Wextra \
        -Wpedantic -Wconversion -Wshadow -Werror -I. -Iinclude -isystem /usr/include/eigen3 \
        -DCOORDTRANS_SOURCE_DIR='"."' -fsyntax-only \
        -include HEADER -x c++ /dev/null || fail "a header does not compile alone; see above"
    # Users may compile the public headers as C++20.
    find include -name '*.h' | xargs -P "$(nproc)" -I HEADER clang++ -std=c++20 -Wall -Wextra -Wpedantic -Wconversion \
        -Wshadow -Werror -Iinclude -fsyntax-only -include HEADER -x c++ /dev/null ||
        fail "a public header does not compile with clang++ as C++20; see above"
}

# Checks the translation of platform faults against the Windows headers. Only folders without Boost can be checked.
check_windows_branch() {
    say "Windows branch (mingw-w64)"
    find platform errors text -name '*.cpp' ! -name '*_test.cpp' -print0 | xargs -0 \
        x86_64-w64-mingw32-g++-posix -std=c++17 -Wall -Wextra -Werror -I. -Iinclude -DCOORDTRANS_BUILDING -fsyntax-only
}

# tidy OPTION PATTERN CHECKS: runs clang-tidy on the sources of build/tidy whose names `grep OPTION PATTERN` selects.
# CHECKS are changes to the list in .clang-tidy.
tidy() {
    sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' build/tidy/compile_commands.json | sort -u | grep -E "$1" "$2" |
        xargs -n 1 -P "$(nproc)" clang-tidy -p build/tidy --quiet --warnings-as-errors='*' --checks="$3" 2>>build/tidy.log ||
        fail "clang-tidy reports errors; see above and build/tidy.log"
}

# Builds nothing. Sources that are compiled together are read together, which takes a third of the time. In tests,
# benchmarks and fuzz targets only likely mistakes count: they copy, move and inspect moved objects on purpose, and may
# end with an exception.
check_tidy() {
    local tests='_tests\.dir/|_test\.cpp$|/tests/|/benchmarks/|/fuzz/' together=-bugprone-suspicious-include
    local mistakes=-*,bugprone-*,misc-unused-*,-bugprone-easily-swappable-parameters,-bugprone-exception-escape
    mistakes+=,-bugprone-reserved-identifier,-bugprone-stringview-nullptr,-bugprone-unhandled-self-assignment
    mistakes+=,-bugprone-use-after-move
    say "clang-tidy"
    cmake --preset tsan -B build/tidy -DCOORDTRANS_SANITIZERS= -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        -DCOORDTRANS_BUILD_FEATURE_SERVER=ON >build/tidy.log 2>&1 ||
        { cat build/tidy.log >&2 && exit 1; }
    tidy -v "$tests" $together
    tidy -e "$tests" "$mistakes,$together"
}

# All public declarations have documentation: the reference fails at the first gap.
check_reference() {
    say "Reference of the public headers (log: build/reference.log)"
    cmake --build build/release --target reference >build/reference.log 2>&1 || { cat build/reference.log >&2; exit 1; }
}

# The generated PROJ directory must be within ten metres of PROJ's best operation for at least 97.9 % of the codes, and
# within two metres for at least 94.5 %.
check_proj_directory() {
    local summary=build/release/proj-full-summary.txt
    say "Agreement of the generated PROJ directory ($summary)"
    sed -n '/^Largest/,/beyond/p' $summary
    awk '/^Anywhere/ { exit } /within 2 m/ { two = $5 } /within 10 m/ { ten = $5 } END { exit !(two >= 94.5 && ten >= 97.9) }' \
        $summary || fail "the generated PROJ directory is less accurate than required"
}

# report_page FILE FRAGMENT: prints the page of the report after Chromium has run its script on the fragment.
report_page() {
    local sandbox=()
    [ "$(id -u)" != 0 ] || sandbox=(--no-sandbox)
    timeout 120 chromium --headless=new --disable-gpu "${sandbox[@]}" --user-data-dir="$PWD/build/report/profile" \
        --dump-dom "file://$PWD/$1#$2" 2>>build/report/chromium.log | tr -d '\n'
}

# Prints the codes in the rows of a page, in order.
codes_shown() {
    grep -oE '<tbody id="rows">.*</tbody>' | grep -oE '<td class="right">[0-9]+</td>' | grep -oE '[0-9]+' | tr '\n' ' ' || true
}

# The page of the report must filter and sort in a browser, and must show names as plain text.
check_report_page() {
    say "Page of the report in Chromium"
    local folder=build/report fragment expected shown
    rm -rf $folder && mkdir -p $folder
    printf '%s\n' 2154 4230 4326 23030 23031 25832 27700 >$folder/codes
    build/release/tools/projdir/crs-projdir --verify --codes $folder/codes --report $folder/page.html $folder/proj >$folder/log ||
        fail "crs-projdir fails; see $folder/log"
    while IFS='|' read -r fragment expected; do
        shown=$(report_page $folder/page.html "$fragment" | codes_shown)
        [ "$shown" = "${expected:+$expected }" ] || fail "the page shows $shown for #$fragment; expected: $expected"
    done <<'EOF'
|2154 4230 4326 23030 23031 25832 27700
name=zone+UTM|23030 23031 25832
name=zone+UTM&sort=-code|25832 23031 23030
code=23|23030 23031
country=isle+of+man&kind=projected|27700
place=-3.7,40.4|4230 4326 23030
kind=geographic&sort=name|4230 4326
distance=100|
sort=-code&code=2&name=ed50|23031 23030
EOF
    sed 's/UTM zone 31N/\\u003cimg src=x onerror=document.title=1>/' $folder/page.html >$folder/hostile.html
    report_page $folder/hostile.html name=img | grep -q '<summary>ED50 / &lt;img src=x onerror=document.title=1&gt;</summary>' ||
        fail "the page does not show markup in a name as text"
}

# Compiles the library with the other C++ standard library. Boost.Filesystem of the distribution needs libstdc++, so the
# library is not linked or run.
check_libcxx() {
    local folder=build/libcxx
    say "Compiling the library with libc++ (log: $folder.log)"
    if ! { cmake --preset release -B "$folder" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS=-stdlib=libc++ \
        -DCMAKE_BUILD_TYPE=Debug -DCOORDTRANS_BUILD_TOOLS=OFF -DCOORDTRANS_DEVELOPER=ON &&
        cmake --build "$folder" --target coordtrans_objects coordtrans_classic coordtrans_text; } >"$folder.log" 2>&1; then
        tail -n 30 "$folder.log" >&2
        exit 1
    fi
}

# hardening_gaps FILE...: prints which hardening of cmake/CoordTransFlags.cmake the files lack.
hardening_gaps() {
    local file headers dynamic symbols
    for file in "$@"; do
        headers=$(readelf -hlW "$file") dynamic=$(readelf -dW "$file") symbols=$(readelf --dyn-syms -W "$file")
        [[ $headers == *GNU_RELRO* && $dynamic == *BIND_NOW* ]] || echo "$file: relocations are writable"
        [[ $headers == *' DYN '* ]] || echo "$file: the address is fixed"
        [[ $symbols == *__stack_chk_fail* ]] || echo "$file: no stack canaries"
        # No pipe: the second grep would end before the first has written everything, and the pipe would fail.
        grep -qE ' __[a-z_]+_chk[@ ]' <<<"${symbols//__stack_chk_fail/}" || echo "$file: no function has bounds checks"
        # The start-up code of the C library contains a few such marks.
        [ "$(uname -m)" != x86_64 ] || [ "$(objdump -d "$file" | grep -c endbr64)" -gt 10 ] ||
            echo "$file: targets of indirect calls are not marked"
    done
}

# Stack probes are not visible to readelf, so this checks the commands of the compiler.
sources_without_stack_probes() {
    grep -E '"command".*(coordtrans_objects|coordtrans_classic|coordtrans_text|crsctl|crsctl_core|crs-projdir|projdir_core)\.dir/' "$1/compile_commands.json" |
        grep -v -e -fstack-clash-protection || true
}

check_hardening() {
    say "Hardening of library and tools"
    local gaps folder=build/release
    gaps=$(hardening_gaps $folder/libCoordinateTransformation.so $folder/tools/crsctl/crsctl $folder/tools/projdir/crs-projdir)
    gaps+=$(sources_without_stack_probes $folder)
    [ -z "$gaps" ] || fail "$gaps"
    # The check must find all gaps of a program without hardening.
    g++ -x c++ - -o build/unhardened -O2 -no-pie -U_FORTIFY_SOURCE -fno-stack-protector -fcf-protection=none \
        -Wl,-z,norelro,-z,lazy <<<'int main() {}'
    gaps=$(hardening_gaps build/unhardened)
    [ "$(wc -l <<<"$gaps")" = 5 ] || fail "only these of five gaps are found: $gaps"
}
