#!/usr/bin/env bash
# Renders the manual page and fails on any warning of man or groff, and on any VANTRIL_ variable that
# the program reads but the page does not name: check-manpage.sh PAGE SOURCE_FOLDER
set -euo pipefail
page=$1
sources=$2

warnings=$(MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null || echo "man failed with status $?")
if [[ -n "$warnings" ]]; then
    echo "$page renders with warnings:"
    echo "$warnings"
    exit 1
fi

# The program reads its variables by their names as string literals; build options are not among them.
missing=0
for name in $(grep -rhoE '"VANTRIL_[A-Z_]+"' "$sources" --include='*.cpp' | tr -d '"' | sort -u); do
    if ! grep -q "^\.B $name\$" "$page"; then
        echo "$page does not describe $name"
        missing=1
    fi
done
exit $missing
