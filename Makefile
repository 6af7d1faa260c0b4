# The everyday commands. Each target installs the Debian packages that it needs and finds missing.
# docs/building.md tells more; `make help` lists the targets.

JOBS ?= $(shell nproc)

.NOTPARALLEL:
.DEFAULT_GOAL := help

heading = @printf '\n=== $@: %s ===\n'
packages = @tools/install_packages.sh
configure = cmake --preset
build = cmake --build --parallel $(JOBS) --preset
ctest = ctest --parallel $(JOBS) --preset

##@ Everyday

.PHONY: test demo bench help

test: ## Build the release preset and run every test
	$(heading) 'every test, release preset'
	$(packages) build test demo
	$(configure) release -DZEB_BUILD_BENCH=OFF
	$(build) release
	$(ctest) release

demo: ## Run the hosting example on README.md
	$(heading) 'the hosting example'
	$(packages) build test demo
	$(configure) release -DZEB_BUILD_BENCH=OFF
	@if [ -f examples/CMakeLists.txt ]; then $(build) release --target run-hosting; \
	  else echo 'The example is absent: there is no examples/CMakeLists.txt.'; fi

bench: ## Measure against the peers and write docs/performance.md
	$(heading) 'the benchmark'
	$(packages) build test demo bench
	$(configure) release -DZEB_BUILD_BENCH=ON
	@if [ -f bench/CMakeLists.txt ]; then $(build) release --target zeb_bench && \
	    build/release/bench/zeb_bench && tools/performance_page.py; \
	  else echo 'The benchmark is absent: there is no bench/CMakeLists.txt.'; fi

help: ## Show this list
	@awk -F ':.*## ' '/^##@/ { printf "\n%s\n", substr($$0, 5) } \
	  /^[a-z-]+:.*## / { printf "  %-18s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)
