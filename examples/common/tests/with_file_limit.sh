#!/usr/bin/env bash
# with_file_limit.sh <KiB> <program> [<argument>...]: runs a program that can make no file longer than
# this, as on a disk that is full.
set -euo pipefail

trap '' XFSZ  # the write fails instead
ulimit -f "$1"
shift
exec "$@"
