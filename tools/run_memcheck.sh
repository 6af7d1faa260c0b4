#!/usr/bin/env bash
# run_memcheck.sh <program> [<argument>...]: runs the program under valgrind and fails on a memory
# error or a leak as on a failure of its own.
#
# Nothing is suppressed. Memory that is still reachable at the end is as bad as memory that is lost:
# a stopped library has given everything back. Forked children are death tests, which end in the
# middle of their work; valgrind does not report on them.
set -euo pipefail

exec valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=all \
  --errors-for-leak-kinds=all --num-callers=30 --keep-debuginfo=yes --child-silent-after-fork=yes \
  --fair-sched=yes "$@"
