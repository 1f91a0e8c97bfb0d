// SPDX-License-Identifier: Apache-2.0
// A plugin for qemu-aarch64 that counts executed instructions between the marks of benchmarks/arm/mark.h.
//
// Arguments: out=FILE, and profile=on for a count of every block of code as well. The file has one line a run, "run N
// INSTRUCTIONS", behind the lines "block ADDRESS INSTRUCTIONS TIMES" of the blocks that ran in it. One thread only.
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>

#include "benchmarks/arm/mark.h"
#include "benchmarks/arm/plugin/qemu_plugin.h"

extern "C" {
int qemu_plugin_version = 1;
}

namespace {

struct Block {
    uint64_t times = 0;
    uint64_t timesBefore = 0;
};

FILE* gOut = nullptr;
bool gHasProfile = false;
uint64_t gInstructions = 0;
uint64_t gInstructionsBefore = 0;
// By address and length: qemu may translate a block anew, and another length is another block. Counters stay where they
// are, as a map's elements do.
std::map<std::pair<uint64_t, size_t>, Block> gBlocks;

void on_translation(qemu_plugin_id_t /*id*/, qemu_plugin_tb* block) {
    const size_t instructions = qemu_plugin_tb_n_insns(block);
    qemu_plugin_register_vcpu_tb_exec_inline(block, QEMU_PLUGIN_INLINE_ADD_U64, &gInstructions, instructions);
    if (gHasProfile) {
        Block& counted = gBlocks[{qemu_plugin_tb_vaddr(block), instructions}];
        qemu_plugin_register_vcpu_tb_exec_inline(block, QEMU_PLUGIN_INLINE_ADD_U64, &counted.times, 1);
    }
}

void write_blocks() {
    for (const auto& [place, block] : gBlocks) {
        if (block.times != block.timesBefore) {
            std::fprintf(gOut, "block %llu %zu %llu\n", static_cast<unsigned long long>(place.first), place.second,
                         static_cast<unsigned long long>(block.times - block.timesBefore));
        }
    }
}

void on_system_call(qemu_plugin_id_t /*id*/, unsigned /*vcpu*/, int64_t number, uint64_t mark, uint64_t /*a2*/,
                    uint64_t /*a3*/, uint64_t /*a4*/, uint64_t /*a5*/, uint64_t /*a6*/, uint64_t /*a7*/,
                    uint64_t /*a8*/) {
    if (number != korvane::arm::kMarkSystemCall) {
        return;
    }
    if (mark % 2 == 1) {
        write_blocks();
        std::fprintf(gOut, "run %llu %llu\n", static_cast<unsigned long long>(mark / 2),
                     static_cast<unsigned long long>(gInstructions - gInstructionsBefore));
        std::fflush(gOut);
    }
    for (auto& [place, block] : gBlocks) {
        block.timesBefore = block.times;
    }
    gInstructionsBefore = gInstructions;
}

}  // namespace

int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* /*info*/, int count, char** arguments) {
    for (int i = 0; i < count; ++i) {
        if (std::strncmp(arguments[i], "out=", 4) == 0) {
            gOut = std::fopen(arguments[i] + 4, "w");
        }
        gHasProfile = gHasProfile || std::strcmp(arguments[i], "profile=on") == 0;
    }
    if (gOut == nullptr) {
        std::fputs("instruction_counter: no out=FILE that can be written\n", stderr);
        return -1;
    }
    qemu_plugin_register_vcpu_tb_trans_cb(id, on_translation);
    qemu_plugin_register_vcpu_syscall_cb(id, on_system_call);
    return 0;
}
