// SPDX-License-Identifier: Apache-2.0
// The part of qemu's plugin interface (version 1) that the counter uses. Debian ships no header for it.
#ifndef KORVANE_BENCHMARKS_ARM_PLUGIN_QEMU_PLUGIN_H_
#define KORVANE_BENCHMARKS_ARM_PLUGIN_QEMU_PLUGIN_H_

#include <cstddef>
#include <cstdint>

extern "C" {

using qemu_plugin_id_t = uint64_t;
struct qemu_info_t;
struct qemu_plugin_tb;  // a block of guest code while qemu translates it
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

using qemu_plugin_tb_callback = void (*)(qemu_plugin_id_t, qemu_plugin_tb*);
using qemu_plugin_syscall_callback = void (*)(qemu_plugin_id_t, unsigned vcpu, int64_t number, uint64_t a1, uint64_t a2,
                                              uint64_t a3, uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7,
                                              uint64_t a8);

void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id, qemu_plugin_tb_callback callback);
void qemu_plugin_register_vcpu_syscall_cb(qemu_plugin_id_t id, qemu_plugin_syscall_callback callback);
// Adds `value` to *counter each time the block runs.
void qemu_plugin_register_vcpu_tb_exec_inline(qemu_plugin_tb* block, qemu_plugin_op operation, void* counter,
                                              uint64_t value);
size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb* block);
uint64_t qemu_plugin_tb_vaddr(const qemu_plugin_tb* block);

// What qemu looks for in a plugin.
extern __attribute__((visibility("default"))) int qemu_plugin_version;
__attribute__((visibility("default"))) int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* info, int count,
                                                               char** arguments);

}  // extern "C"

#endif  // KORVANE_BENCHMARKS_ARM_PLUGIN_QEMU_PLUGIN_H_
