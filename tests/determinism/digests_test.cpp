// SPDX-License-Identifier: Apache-2.0
// The digests of kernel_digests.h are equal on every instruction set, processor and compiler and with every degree of
// optimisation. digests.txt beside this file holds them; KORVANE_WRITE_DIGESTS=FILE writes it anew.
#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

#include "tests/determinism/kernel_digests.h"
#include "tests/support/simd_targets.h"

namespace {

// Of SVE, whose code is the same for each length.
std::string vector_length() {
#if defined(PR_SVE_GET_VL)
    const int bytes = prctl(PR_SVE_GET_VL);
    return bytes < 0 ? "" : " of " + std::to_string((bytes & PR_SVE_VL_LEN_MASK) * 8) + " bits";
#else
    return "";
#endif
}

// At a small size and at a larger one.
using Record = std::map<std::string, std::pair<uint64_t, uint64_t>>;

Record all_digests() {
    const Digests large = kernel_digests(320, 180);
    Record all;
    for (const auto& [name, value] : kernel_digests(97, 41)) {
        all[name] = {value, large.at(name)};
    }
    return all;
}

TEST(Digests, AreThoseOnRecord) {
    if (const char* path = std::getenv("KORVANE_WRITE_DIGESTS")) {
        std::ofstream file(path);
        for (const auto& [name, values] : all_digests()) {
            file << std::hex << values.first << ' ' << values.second << ' ' << name << '\n';
        }
        ASSERT_TRUE(file.flush()) << path;
    }
    Record onRecord;
    std::ifstream file(KORVANE_DIGESTS);
    std::pair<uint64_t, uint64_t> values;
    for (std::string name; file >> std::hex >> values.first >> values.second && std::getline(file >> std::ws, name);) {
        onRecord[name] = values;
    }
    for_each_simd_target([&](const std::string& target) {
        EXPECT_EQ(all_digests(), onRecord) << target;
        std::printf("%s%s\nproof: %zu digests\n", target.c_str(), vector_length().c_str(), 2 * onRecord.size());
    });
}

}  // namespace
