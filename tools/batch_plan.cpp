// SPDX-License-Identifier: Apache-2.0
#include "tools/batch_plan.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <system_error>

#include "tools/command.h"
#include "tools/photo/formats.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

namespace fs = std::filesystem;

// The file that a path leads to, whether it is there yet or not.
fs::path resolve(const fs::path& path) {
    std::error_code error;
    fs::path resolved = fs::weakly_canonical(path, error);
    return error ? fs::absolute(path).lexically_normal() : resolved;
}

fs::path shared_folder(const std::vector<fs::path>& photos) {
    fs::path shared = photos.front().parent_path();
    for (const fs::path& photo : photos) {
        const fs::path folder = photo.parent_path();
        const auto [end, ignored] = std::mismatch(shared.begin(), shared.end(), folder.begin(), folder.end());
        fs::path common;
        for (auto part = shared.begin(); part != end; ++part) {
            common /= *part;
        }
        shared = common;
    }
    return shared;
}

// What the file holds, by its first bytes; empty for what cannot be read or is no photo.
std::string format_of_content(const fs::path& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        return {};
    }
    Bytes start(16);
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(start.data()), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<size_t>(file.gcount()));
    const PhotoFormatInfo* info = recognize_photo(start);
    return info == nullptr ? std::string() : info->extensions.front();
}

// Without a format a name that tells one stays as it is, and any other gets what the file holds.
fs::path with_extension(fs::path name, const fs::path& photo, const std::string& format) {
    if (!format.empty() && !names_format(name, format)) {
        if (names_format(name, {})) {
            name.replace_extension();
        }
        name += "." + format;
    } else if (format.empty() && !names_format(name, {})) {
        const std::string own = format_of_content(photo);
        name += own.empty() ? "" : "." + own;
    }
    return name;
}

}  // namespace

std::vector<PlannedPhoto> plan_batch(const std::vector<std::string>& inputs, const std::string& folder,
                                     const std::string& format) {
    std::map<fs::path, std::string> sources;
    std::vector<PlannedPhoto> plan;
    std::vector<fs::path> paths;
    for (const std::string& input : inputs) {
        if (input == "-") {
            throw UsageError("standard input cannot be one of several photos or go into a folder: it has no name");
        }
        if (sources.emplace(resolve(input), input).second) {
            plan.push_back({input, {}});
            paths.push_back(fs::absolute(input).lexically_normal());
        }
    }
    if (folder.empty()) {
        return plan;
    }
    const fs::path shared = shared_folder(paths);
    std::map<fs::path, std::string> results;
    for (size_t i = 0; i < plan.size(); ++i) {
        PlannedPhoto& photo = plan[i];
        const fs::path output =
            fs::path(folder) / with_extension(paths[i].lexically_relative(shared), paths[i], format);
        photo.output = output.string();
        const fs::path target = resolve(output);
        const auto [other, isNew] = results.emplace(target, photo.input);
        if (!isNew) {
            throw UsageError(other->second + " and " + photo.input + " would both become " + photo.output);
        }
        const auto source = sources.find(target);
        if (source != sources.end() && source->second != photo.input) {
            throw UsageError(photo.input + " would become " + photo.output + ", which is one of the photos");
        }
    }
    return plan;
}

}  // namespace korvane
