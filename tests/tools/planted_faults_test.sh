#!/usr/bin/env bash
# planted_faults_test.sh <folder of planted_faults> <tool>...: each tool finds what it is there for.
source "$(dirname "$0")/expect.sh"

faults=$1/planted_faults
shift

for tool in "$@"; do
  case $tool in
    address)
      expect_fault 'heap-use-after-free' "$faults" use-after-free
      expect_fault 'detected memory leaks' "$faults" leak ;;
    undefined)
      expect_fault 'signed integer overflow' "$faults" overflow ;;
    thread)
      expect_fault 'data race' "$faults" race ;;
    memcheck)
      skip_without valgrind
      expect_pass "$tools/run_memcheck.sh" "$faults" nothing
      expect_fault 'Invalid read' "$tools/run_memcheck.sh" "$faults" use-after-free
      expect_fault 'definitely lost' "$tools/run_memcheck.sh" "$faults" leak
      expect_fault 'still reachable' "$tools/run_memcheck.sh" "$faults" reachable ;;
  esac
done
expect_pass "$faults" nothing
