#!/usr/bin/env bash
# Sets up what is missing, builds, and runs.
#
#     ./run.sh              converts the examples
#     ./run.sh ARGUMENT...  hands its arguments to quelt-migrate and ends with its exit status
set -euo pipefail

root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
"$root/scripts/setup.sh"
"$root/scripts/build.sh" release quelt-migrate
if [ $# -gt 0 ]; then
    exec "$root/build/release/bin/quelt-migrate" "$@"
fi

cd "$root"
answers=build/release/answers.ndjson
main_job=(convert --context examples/context.json examples/records.ndjson -o "$answers")
echo "run: quelt-migrate ${main_job[*]}" >&2
status=0
build/release/bin/quelt-migrate "${main_job[@]}" || status=$?
case $status in
0) echo "run: every record converted; the answers are in $answers" >&2 ;;
1) echo "run: some records failed, as the examples mean them to; the answers are in $answers" >&2 ;;
*) exit "$status" ;;
esac
