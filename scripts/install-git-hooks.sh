#!/usr/bin/env bash
# Installs a pre-commit hook that refuses a commit whose staged C++ files are not
# clang-format clean (the same check scripts/test.sh makes). Usage: scripts/install-git-hooks.sh
set -euo pipefail
cd "$(dirname "$0")/.."
hooks=$(git rev-parse --git-path hooks)
mkdir -p "$hooks"
cat >"$hooks/pre-commit" <<'HOOK'
#!/usr/bin/env bash
# Installed by scripts/install-git-hooks.sh: staged C++ files must be clang-format clean.
set -euo pipefail
files=()
while IFS= read -r -d '' file; do
    files+=("$file")
done < <(git diff --cached --name-only --diff-filter=ACMR -z -- '*.cpp' '*.h')
if [ "${#files[@]}" -eq 0 ]; then
    exit 0
fi
status=0
for file in "${files[@]}"; do
    # The staged content, not the work tree's, is what gets committed.
    if ! git show ":$file" | clang-format --dry-run --Werror --assume-filename="$file" >/dev/null 2>&1; then
        echo "not clang-format clean: $file (run: clang-format -i $file)" >&2
        status=1
    fi
done
exit "$status"
HOOK
chmod +x "$hooks/pre-commit"
echo "installed $hooks/pre-commit"
