# The two commands of README.md: `make run` and `make test`. Both install what they lack first.
JOBS ?= $(shell nproc)
# What `make run` builds: the windows target's client, in a release build of its own with its own Wine prefix.
CLIENT := build/windows-release

.PHONY: run test bench fuzz deps-native deps-windows deps-fuzz clean

run: deps-windows
	@mkdir -p build
	@cmake -S . -B $(CLIENT) -DCMAKE_BUILD_TYPE=Release -DKOR_BUILD_TESTS=OFF \
		-DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/toolchain-mingw64.cmake >$(CLIENT).configure.log 2>&1 || (cat $(CLIENT).configure.log; false)
	@cmake --build $(CLIENT) -j$(JOBS) --target korclient >$(CLIENT).build.log 2>&1 || (grep -E 'error|Error' $(CLIENT).build.log; false)
	@./cmake/run-korclient.sh $(CLIENT)

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
