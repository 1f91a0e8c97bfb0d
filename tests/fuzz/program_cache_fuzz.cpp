// SPDX-License-Identifier: Apache-2.0
// Any bytes as a file of the program cache: what a script takes from the file, and the file that it leaves behind.
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "frameworks/core/memory.h"
#include "frameworks/gpu/gpu_script.h"
#include "frameworks/gpu/program_cache.h"
#include "tests/fuzz/fuzz.h"

namespace {

Bytes read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// In memory where the system has such a place. Removed with its files when the program ends.
struct Folder {
    std::string path = std::string(std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp") + "/korvane-fuzz-XXXXXX";
    Folder() {
        REQUIRE(mkdtemp(path.data()) != nullptr);
        write_file(path + "/file", {1});
    }
    ~Folder() { std::filesystem::remove_all(path); }
};

}  // namespace

void fuzz(Input& input) {
    static const Folder folder;
    REQUIRE(korvane::set_program_cache_directory((folder.path + (input.ConsumeBool() ? "/" : "")).c_str()) == 0);
    REQUIRE(korvane::set_program_cache_directory((folder.path + "/file").c_str()) == ENOTDIR);
    REQUIRE(korvane::program_cache_directory() == folder.path + "/");
    const int kind = input.between(0, 3);
    Bytes expected = input.rest();
    const std::string path = folder.path + "/script.osb";
    kind == 0 ? static_cast<void>(std::filesystem::remove(path)) : write_file(path, expected);
    const bool isPresent = kind != 0 && expected.size() > 4;
    {
        GPUScript script(nullptr, "script");
        const auto held = static_cast<size_t>(script.getScirptBinarySize());
        REQUIRE(held == (isPresent ? expected.size() - 4 : 0));
        REQUIRE((script.getScriptBinary() != nullptr) == isPresent);
        if (isPresent) {
            const GLenum format = script.getScriptBinaryFormat();
            REQUIRE(std::memcmp(&format, expected.data(), 4) == 0);
            REQUIRE(std::memcmp(script.getScriptBinary(), expected.data() + 4, held) == 0);
        }
        REQUIRE(script.addSource("name", "text") && !script.addSource("name", ""));
        REQUIRE(!script.addSource(nullptr, "text"));
        if (kind == 2) {
            // Another binary, half as long and turned round: that is what the file becomes.
            Bytes binary(expected.rbegin(), expected.rbegin() + static_cast<ptrdiff_t>(expected.size() / 2));
            void* copy = galloc_malloc(binary.size() + 1);
            std::copy(binary.begin(), binary.end(), static_cast<unsigned char*>(copy));
            galloc_free(script.getScriptBinary());
            script.setScriptBinary(copy, static_cast<int>(binary.size()));
            script.setScriptBinaryFormat(0x01020304);
            expected = {4, 3, 2, 1};
            expected.insert(expected.end(), binary.begin(), binary.end());
        }
        script.clear();
        REQUIRE(script.getScriptSourceByIndex(0).get() == nullptr);
    }
    // Without a binary nothing is written; with one the file holds it.
    REQUIRE(std::filesystem::exists(path) == (kind != 0));
    REQUIRE(kind == 0 || read_file(path) == expected);
}
