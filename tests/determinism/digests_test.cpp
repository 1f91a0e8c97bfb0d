// SPDX-License-Identifier: Apache-2.0
// The digests of kernel_digests.h are equal on every instruction set, processor and compiler and with every degree of
// optimisation. digests.txt beside this file holds them; KORVANE_WRITE_DIGESTS=FILE writes it anew.
#include <gtest/gtest.h>
#include <sys/prctl.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

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

Digests all_digests() {
    Digests all = kernel_digests(97, 41);
    all.merge(kernel_digests(320, 180));
    return all;
}

TEST(Digests, AreThoseOnRecord) {
    if (const char* path = std::getenv("KORVANE_WRITE_DIGESTS")) {
        std::ofstream file(path);
        for (const auto& [name, value] : all_digests()) {
            file << std::hex << value << ' ' << name << '\n';
        }
        ASSERT_TRUE(file.flush()) << path;
    }
    Digests onRecord;
    std::ifstream file(KORVANE_DIGESTS);
    uint64_t value = 0;
    for (std::string name; file >> std::hex >> value && std::getline(file >> std::ws, name);) {
        onRecord[name] = value;
    }
    for_each_simd_target([&](const std::string& target) {
        EXPECT_EQ(all_digests(), onRecord) << target;
        std::printf("%s%s\nproof: %zu digests\n", target.c_str(), vector_length().c_str(), onRecord.size());
    });
}

}  // namespace
