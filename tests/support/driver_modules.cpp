// SPDX-License-Identifier: Apache-2.0
// Keeps libraries mapped that the program has loaded. Mesa unloads its driver when the last display goes, and what the
// driver has leaked by then would be reported without a module, where no suppression (tests/lsan.supp) can name it.
extern "C" __attribute__((visibility("default"))) int dlclose(void* /*handle*/) {
    return 0;
}
