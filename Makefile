# The two commands of README.md: `make run` and `make test`. Both install what they lack first.
JOBS ?= $(shell nproc)
RELEASE := build/native-release
# What `make run` runs: the history search over the sample built into the program.
ARGS ?= search

.PHONY: run test bench fuzz deps-native deps-windows deps-fuzz clean

run: deps-native
	@mkdir -p build
	@cmake -S . -B $(RELEASE) -DCMAKE_BUILD_TYPE=Release -DKOR_BUILD_TESTS=OFF >$(RELEASE).configure.log 2>&1 || (cat $(RELEASE).configure.log; false)
	@cmake --build $(RELEASE) -j$(JOBS) --target korfiles >$(RELEASE).build.log 2>&1 || (grep -E 'error|Error' $(RELEASE).build.log; false)
	@$(RELEASE)/bin/korfiles $(ARGS)

test: deps-native deps-windows deps-fuzz
	@./cmake/run-tests.sh

bench: deps-native
	@./bench/run.sh

# The fuzz harnesses for FUZZ_SECONDS (default 300) each; `make test` runs them briefly (docs/fuzzing.md).
fuzz: deps-native deps-fuzz
	@./fuzz/run.sh long

deps-native:
	@./cmake/install-deps.sh native

deps-windows:
	@./cmake/install-deps.sh windows

deps-fuzz:
	@./cmake/install-deps.sh fuzz

clean:
	rm -rf build
