# The everyday commands. Each target installs the Debian packages that it needs and finds missing.
# docs/building.md tells more; `make help` lists the targets.

JOBS ?= $(shell nproc)
export JOBS

.NOTPARALLEL:
.DEFAULT_GOAL := help

heading = @printf '\n=== %s: %s ===\n' '$@'
packages = @tools/install_packages.sh build test demo
configure = cmake --preset
build = cmake --build --parallel $(JOBS) --preset
ctest = ctest --parallel $(JOBS) --preset

library = build/release/lib/libzeb.so
bench = build/release/bench/zeb_bench
policy = build/release/bench/cache_policy

##@ Everyday

.PHONY: test demo bench check gates reference doxygen format coverage help
test: release ## Build the release preset and run every test
	$(heading) 'every test of the release build'
	$(ctest) release

demo: release ## Run the examples
	$(heading) 'the hosting example'
	$(build) release --target run-hosting
	$(heading) 'the copy example'
	$(build) release --target run-copy
	$(heading) 'the thumbnails example'
	$(build) release --target run-thumbnails

bench: $(bench) ## Measure against the peers; rewrite docs/performance.md and cache_policy.md
	$(heading) 'all rows'
	$(bench)
	tools/performance_page.py
	$(heading) 'what the cache saves'
	$(policy) --json $(policy).json
	tools/cache_policy_page.py

check: test gates ## Everything that CI runs: test, then the gates

reference: ## Rewrite docs/reference/ and the headers' tables from share/zeb/zeb.json
	tools/generate.py pages
	tools/generate.py headers

doxygen: gate-doxygen ## Build the pages of the headers and the guide: build/doxygen/html/index.html

format: ## Format every source in place
	$(packages) gates
	tools/check_format.sh --fix

coverage: ## Run every test and report which lines and branches it reached
	$(heading) 'which lines and branches the tests reach'
	$(packages) gates
	$(configure) coverage
	$(build) coverage
	find build/coverage -name '*.gcda' -delete
	$(ctest) coverage
	mkdir -p build/coverage/report
	gcovr --root . --filter src/ --filter include/ --exclude-throw-branches \
	  --html-details build/coverage/report/index.html --txt --print-summary build/coverage

help: ## Show this list
	@awk -F ':.*## ' '/^##@/ { printf "\n%s\n", substr($$0, 5) } \
	  /^[a-z-]+:.*## / { printf "  %-15s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)

##@ Gates

gates := gate-floors gate-format gate-description gate-doxygen gate-exports gate-hardening \
  gate-asan gate-tsan gate-clang gate-tidy gate-memcheck gate-consume gate-bench
.PHONY: $(gates) gate-packages
gates: $(gates) demo ## All of them, and the demo

gate-floors: gate-packages ## No include runs up to a higher floor
	$(heading) 'the direction of every include'
	tools/check_floors.py

gate-format: gate-packages ## The sources look as .clang-format says
	$(heading) 'the look of the sources'
	tools/check_format.sh

gate-description: gate-packages ## share/zeb/zeb.json is sound, and what is made of it is its own
	$(heading) 'the description of the interfaces'
	tools/check_description.py
	tools/generate.py pages --check
	tools/generate.py headers --check

gate-doxygen: gate-packages ## Every public name has its comment, and every reference leads somewhere
	$(heading) 'the pages of the headers and the guide'
	tools/check_doxygen.sh

gate-exports: release ## The library exports its eleven names and nothing else
	$(heading) 'what the library exports'
	tools/check_exports.sh $(library) src/frame/exports.txt libzeb.so.4

gate-hardening: release ## The library is built with every hardening
	$(heading) 'how the library is hardened'
	tools/check_hardening.sh $(library) build/release/compile_commands.json $(CURDIR)/src

gate-asan: ## Every test under the address, undefined-behaviour and leak sanitizers
gate-tsan: ## Every test under the thread sanitizer
gate-clang: ## Everything built by clang, with its thread-safety analysis, and every test
gate-asan gate-tsan gate-clang: export ZEB_TOOLS_REQUIRED = 1
gate-asan gate-tsan gate-clang: gate-%: gate-packages
	$(heading) 'build and tests of the preset $*'
	$(configure) $*
	$(build) $*
	$(ctest) $*

gate-tidy: gate-packages ## clang-tidy finds nothing
	$(heading) 'clang-tidy over the library and its headers'
	$(configure) clang
	tools/run_tidy.sh build/clang

gate-memcheck: gate-packages release ## The tests of each room under valgrind
	$(heading) 'the tests under valgrind'
	$(ctest) release -C Memcheck -L memcheck

gate-consume: gate-packages release ## Every way to the library for another project; every page of the guide
	$(heading) 'every way to the library, and every page of the guide'
	$(ctest) release -C Consume -L 'consume|guide'

gate-bench: $(bench) ## Every row of the benchmark, briefly
	$(heading) 'a short run of all rows'
	$(bench) --quick --json $(bench).quick.json
	$(policy) --quick

# --- what the targets above start from --------------------------------------------------------------

.PHONY: release $(bench)
release:
	$(heading) 'the release build'
	$(packages)
	$(configure) release -DZEB_BUILD_BENCH=OFF
	$(build) release

$(bench):
	$(heading) 'the release build with the benchmark'
	$(packages) bench
	$(configure) release -DZEB_BUILD_BENCH=ON
	$(build) release --target zeb_bench cache_policy

gate-packages:
	$(packages) bench gates
