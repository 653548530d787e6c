#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Formatting, static checks and the rules of the house. Needs a configured debug build.
set -uo pipefail
cd "$(dirname "$0")/.."
failed=0
fail() { # TITLE ROWS
    [ -n "$2" ] || return 0
    printf '%s\n%s\n\n' "$1" "$2" >&2
    failed=1
}

mapfile -t sources < <(git ls-files 'src/*.cpp' 'src/*.h' 'tests/*.cpp' 'tests/*.h' 'benchmarks/*.cpp' 'benchmarks/*.h')
fail 'Not formatted (clang-format -i):' \
    "$(clang-format --dry-run "${sources[@]}" 2>&1 | grep -o '^[^:]*: warning' | cut -d: -f1 | sort -u)"

mapfile -t licensed < <(git ls-files '*.cpp' '*.h' '*.py' '*.sh' '*.cmake' '*CMakeLists.txt' dev .ci/run \
    'packaging/completions/*' '*.1' '*.metainfo.xml')
fail 'Without a licence line (SPDX-License-Identifier: MIT):' \
    "$(grep -L 'SPDX-License-Identifier: MIT' "${licensed[@]}")"

# What an installation consists of, each by its own validator.
validate() { # COMMAND...
    local output
    output=$("$@" 2>&1) || fail "$*" "${output:-It fails.}"
}
validate desktop-file-validate packaging/app.strandloom.desktop
# The id is our domain strandloom.app reversed; the rule wants a third part.
validate appstreamcli validate --no-net --override=cid-desktopapp-is-not-rdns=info \
    packaging/app.strandloom.metainfo.xml
validate mandoc -Tlint packaging/strandloom.1
fail 'man:' "$(LC_ALL=C.UTF-8 man --warnings -Tutf8 -Z -l packaging/strandloom.1 2>&1 >/dev/null)"
validate bash -n packaging/completions/strandloom.bash
validate zsh -n packaging/completions/_strandloom
validate fish -n packaging/completions/strandloom.fish
mapfile -t drawings < <(git ls-files '*.svg' '*.qrc')
validate xmllint --noout "${drawings[@]}"

version=$(sed -n 's/^project(Strandloom VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
for release in "packaging/app.strandloom.metainfo.xml:<release version=\"$version\"" \
    "packaging/debian/changelog:strandloom ($version-" "CHANGELOG.md:## $version"; do
    grep -m 1 "${release#*:}" "${release%%:*}" >/dev/null ||
        fail 'Not about the version of CMakeLists.txt:' "${release%%:*}"
done

fail 'SECURITY.md names tests that are not there:' \
    "$(grep -oP '`\K(test_\w+|[a-z]+[A-Z]\w*)(?=`)' SECURITY.md | sort -u |
        while read -r name; do git grep -q "\b$name\b" -- tests || echo "$name"; done)"

# g++ 12.2 miscompiles a wait inside a richer expression: the operand is a name or a call of names.
fail 'A wait stands alone on its line, with named arguments:' \
    "$(git grep -nP 'co_await(?!\s+(?:std::move\()?[\w.:>()*-]+(?:\([\w.,:>()*\s&-]*\))?\)?\s*;)' -- 'src/*.cpp' 'src/*.h' | grep -vP '^[^:]*:\d+:\s*//')"

# Qt's own readers drop a U+FEFF at the beginning, which belongs to a text that is stored or fetched.
fail 'UTF-8 and JSON are read by readUtf8 and readJson:' \
    "$(git grep -nE 'QString::from(Utf8|StdString)|QJsonDocument::fromJson' -- 'src/*' ':!src/platform/base/Utf8.*')"

# What the build generates must be there before it can be checked.
cmake --build --preset debug >/dev/null || exit 1
compile_commands=$(mktemp -d)
trap 'rm -rf "$compile_commands"' EXIT
# clang-tidy 14 knows neither the flag nor the macro by which g++ announces coroutines.
sed -e 's/ -fcoroutines//g' build/debug/compile_commands.json >"$compile_commands/compile_commands.json"
git ls-files 'src/*.cpp' | xargs -P "$(nproc)" -n 1 clang-tidy -p "$compile_commands" --quiet \
    --extra-arg=-D__cpp_impl_coroutine=201902L --extra-arg=-Wno-everything \
    >"$compile_commands/tidy.log" 2>"$compile_commands/tidy.err"
fail 'clang-tidy:' "$(grep -E '(warning|error):' "$compile_commands/tidy.log" | sort -u)"
grep -E 'error:' "$compile_commands/tidy.err" >&2 && failed=1

[ "$failed" -eq 0 ] && echo 'lint: nothing found'
exit "$failed"
