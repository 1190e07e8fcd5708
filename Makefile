# SPDX-License-Identifier: GPL-3.0-or-later
# Tarnline: the two commands a newcomer needs.
#   make run    installs what is missing, builds, and starts tarnline on its simulated radio
#   make test   installs what is missing, builds, and runs every test (also under the sanitizers)
#               and checks the Debian package
# Also: make install [PREFIX=/usr/local] [DESTDIR=...], make package (build/release/*.deb).

JOBS ?= $(shell nproc 2>/dev/null || echo 2)
RELEASE := build/release
ASAN := build/asan
TSAN := build/tsan
FUZZ := build/fuzz
FUZZ_SECONDS ?= 30
FUZZ_CAMPAIGN_SECONDS ?= 1200
PREFIX ?= /usr/local

.PHONY: all deps build test test-release test-asan test-tsan test-fuzz test-package test-ratio fuzz \
        run bench install package clean fuzz-build fuzz-campaign

all: build

deps:
	@scripts/install-deps.sh

build: deps
	cmake -S . -B $(RELEASE) -DCMAKE_BUILD_TYPE=Release >/dev/null
	cmake --build $(RELEASE) -j $(JOBS)

test: test-release test-asan test-tsan test-fuzz test-package test-ratio

test-release: build
	cd $(RELEASE) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

test-asan: deps
	cmake -S . -B $(ASAN) -DCMAKE_BUILD_TYPE=Debug -DTARNLINE_SANITIZE=ON -DTARNLINE_BENCH=OFF >/dev/null
	cmake --build $(ASAN) -j $(JOBS)
	cd $(ASAN) && QT_QPA_PLATFORM=offscreen \
	  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --output-on-failure -j $(JOBS)

# The Qt-free core and the simulated radio, whose serving thread is the only other thread.
test-tsan: deps
	cmake -S . -B $(TSAN) -DCMAKE_BUILD_TYPE=Debug -DTARNLINE_TSAN=ON -DTARNLINE_QT=OFF -DTARNLINE_BENCH=OFF >/dev/null
	cmake --build $(TSAN) -j $(JOBS) --target tarnline_tests
	cd $(TSAN) && TSAN_OPTIONS=halt_on_error=1 ctest --output-on-failure -j $(JOBS)

# Every fuzz target for FUZZ_SECONDS under ASan and UBSan, from the seed corpus in fuzz/corpus.
# A longer run: make fuzz FUZZ_SECONDS=3600
test-fuzz: fuzz-build
	scripts/run-fuzzers.sh $(FUZZ)/fuzz $(FUZZ_SECONDS)

fuzz-build: deps
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARNLINE_FUZZ=ON \
	  -DTARNLINE_QT=OFF -DBUILD_TESTING=OFF -DTARNLINE_BENCH=OFF >/dev/null
	cmake --build $(FUZZ) -j $(JOBS) --target fuzz_receive fuzz_scanlist fuzz_fields

# Each fuzz target until it has run 10^7 inputs or FUZZ_CAMPAIGN_SECONDS have passed, one after the
# other; what they found is merged into fuzz/corpus, minimised, for the test command to start from.
fuzz-campaign: fuzz-build
	scripts/fuzz-campaign.sh $(FUZZ)/fuzz 10000000 $(FUZZ_CAMPAIGN_SECONDS)

fuzz: test-fuzz

# The programs, the menu entry, the icon, the AppStream metadata and the manual pages, stripped.
install: build
	DESTDIR="$(DESTDIR)" cmake --install $(RELEASE) --prefix "$(PREFIX)" --strip

# A Debian package of the same under /usr: build/release/tarnline_VERSION_ARCH.deb
package: build
	cd $(RELEASE) && cpack -G DEB

# Builds the package, checks it with dpkg-deb and lintian and runs the programs it installs.
test-package: package
	scripts/test-package.sh $(RELEASE)

# The tests against the code, in lines of every language; fails above 35%.
test-ratio:
	scripts/test-ratio.sh 35

run:
	@scripts/install-deps.sh run
	@$(MAKE) --no-print-directory build
	scripts/run-demo.sh $(RELEASE)/src/shell/qt/tarnline

bench: build
	$(RELEASE)/bench/tarnline_bench

clean:
	rm -rf build
