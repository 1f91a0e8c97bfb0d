// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/photo_io.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>

#include "tools/command.h"
#include "tools/photo/file_io.h"
#include "tools/photo/formats.h"
#include "tools/photo/metadata.h"

namespace korvane {
namespace {

constexpr int kMaxJobs = 1024;

struct SubsamplingName {
    const char* name;
    Subsampling value;
};

constexpr SubsamplingName kSubsamplings[] = {
    {"4:4:4", {1, 1}}, {"4:2:2", {2, 1}}, {"4:2:0", {2, 2}}, {"4:4:0", {1, 2}}, {"4:1:1", {4, 1}},
};

const SubsamplingName* find_subsampling(const std::string& name) {
    const auto* found = std::find_if(std::begin(kSubsamplings), std::end(kSubsamplings),
                                     [&](const SubsamplingName& candidate) { return name == candidate.name; });
    return found == std::end(kSubsamplings) ? nullptr : found;
}

std::string lower_case(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

const PhotoFormatInfo* find_format(const std::string& name) {
    const std::string extension = lower_case(name);
    for (const PhotoFormatInfo& info : photo_formats()) {
        if (std::find(info.extensions.begin(), info.extensions.end(), extension) != info.extensions.end()) {
            return &info;
        }
    }
    return nullptr;
}

std::string extension_of(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

void warn(const std::string& path, const std::vector<std::string>& warnings, bool isStrict) {
    for (const std::string& warning : warnings) {
        std::string line = path;
        line.append(": ").append(warning);
        if (isStrict) {
            throw CommandError(line);
        }
        print_warning(line);
    }
}

void finish_reading(Photo& photo, ImageFormatType format) {
    make_upright(photo, exif_orientation(photo.metadata.exif));
    convert_photo(photo, format);
}

}  // namespace

void add_read_options(CLI::App& app, ReadOptions& options) {
    app.add_flag("--strict", options.isStrict, "Refuse a damaged photo instead of warning about it");
}

void add_write_options(CLI::App& app, WriteOptions& options) {
    app.add_option("-q,--quality", options.quality,
                   "Of a JPEG or WebP file, 1 to 100; by default a JPEG photo keeps its own, else 92")
        ->check(CLI::Range(1, 100));
    CLI::Option* subsampling =
        app.add_option("--subsampling", options.subsampling,
                       "Of a JPEG file: 4:4:4, 4:2:2, 4:2:0, 4:4:0 or 4:1:1; by default a JPEG photo keeps its own");
    subsampling->check([](const std::string& name) {
        return find_subsampling(name) != nullptr ? std::string() : "'" + name + "' is no subsampling, as 4:2:0 is";
    });
    std::vector<std::string> subsamplings;
    for (const SubsamplingName& row : kSubsamplings) {
        subsamplings.emplace_back(row.name);
    }
    suggest(subsampling, subsamplings);
    CLI::Option* format = app.add_option(
        "--format", options.format, "jpg, png or webp, where the output's name does not tell: in a pipe or a folder");
    format->check([](const std::string& name) {
        return find_format(name) != nullptr ? std::string() : "'" + name + "' is none of jpg, png, webp";
    });
    suggest(format, {"jpg", "png", "webp"});
    app.add_flag("--strip", options.strips, "Leave out EXIF, colour profile and XMP");
    add_no_clobber(app, options.noClobber);
}

void add_no_clobber(CLI::App& app, bool& noClobber) {
    const bool isFree = app.get_option_no_throw("-n") == nullptr;
    app.add_flag(isFree ? "-n,--no-clobber" : "--no-clobber", noClobber, "Never overwrite a file");
}

void add_input(CLI::App& app, PhotoOptions& options) {
    app.add_option("input", options.inputs, "The photo, or several: JPEG, PNG or WebP; - is standard input")
        ->required();
    app.add_option("-j,--jobs", options.jobs,
                   "How many of several photos at a time; by default one for each processor. Memory grows with it")
        ->check(CLI::Range(1, kMaxJobs));
    app.add_flag("--quiet", options.isQuiet, "No progress bar, which only a terminal shows anyway");
    app.add_flag("--dry-run", options.isDryRun, "Only say which file each photo would become");
    add_read_options(app, options.read);
}

CLI::Option* add_output(CLI::App& app, std::string& output, WriteOptions& options) {
    CLI::Option* option =
        app.add_option("-o,--output", output, "The result: a name in .jpg, .png or .webp; - is standard output")
            ->required();
    add_write_options(app, options);
    return option;
}

CLI::Option* add_photo_options(CLI::App& app, PhotoOptions& options) {
    add_input(app, options);
    return add_output(app, options.output, options.write)
        ->description(
            "The result: a name in .jpg, .png or .webp; - is standard output; several photos go into a folder, "
            "whose name ends in /");
}

Photo decode_photo(const Bytes& file, const std::string& name, ImageFormatType format, size_t maxPixels) {
    const PhotoFormatInfo* info = recognize_photo(file);
    if (info == nullptr) {
        throw CommandError("cannot read " + name + ": it is not a JPEG, PNG or WebP file");
    }
    try {
        Photo photo = info->read(file, maxPixels);
        finish_reading(photo, format);
        return photo;
    } catch (const FormatError& error) {
        throw CommandError("cannot read " + name + ": " + error.what());
    } catch (const std::bad_alloc&) {
        throw CommandError("cannot read " + name + ": not enough memory");
    }
}

Photo read_photo(const std::string& path, ImageFormatType format, const ReadOptions& options) {
    Photo photo = decode_photo(read_file(path), path, format);
    warn(path, photo.warnings, options.isStrict);
    photo.warnings.clear();
    return photo;
}

bool has_extension(const std::string& path, const std::string& extension) {
    return lower_case(extension_of(path)) == extension;
}

PhotoFormat output_format(const std::string& path, const WriteOptions& options, PhotoFormat own) {
    const bool isStream = is_stream(path);
    const PhotoFormatInfo* byName = isStream ? nullptr : find_format(extension_of(path));
    const PhotoFormatInfo* byOption = options.format.empty() ? nullptr : find_format(options.format);
    if (byOption != nullptr) {
        if (byName != nullptr && byName != byOption) {
            throw CommandError("cannot write " + path + ": --format " + options.format + " and the name disagree");
        }
        return byOption->format;
    }
    if (byName != nullptr) {
        return byName->format;
    }
    if (isStream) {
        return own;
    }
    throw CommandError("cannot write " + path + ": its name must end in .jpg, .jpeg, .png or .webp");
}

void check_output(const std::string& path, const WriteOptions& options) {
    output_format(path, options, PhotoFormat::kJpeg);
    check_writable(path, options.noClobber);
}

bool names_format(const std::string& path, const std::string& format) {
    const PhotoFormatInfo* named = find_format(extension_of(path));
    return named != nullptr && (format.empty() || named == find_format(format));
}

std::ostream& report_stream(const std::string& output) {
    return is_standard_output(output) ? std::cerr : std::cout;
}

void print_report(const PhotoOptions& options, const std::string& lines, bool areNamed) {
    std::ostream& stream = report_stream(options.output);
    std::istringstream rest(lines);
    for (std::string line; std::getline(rest, line);) {
        stream << (options.isBatch && !areNamed ? options.input + ": " : "") << line << '\n';
    }
}

void flatten(Photo& photo) {
    const size_t pixelBytes = photo.pixelBytes();
    for (size_t i = 0; i < photo.alpha.size(); ++i) {
        unsigned char* pixel = photo.pixels() + i * pixelBytes;
        const unsigned int alpha = photo.alpha[i];
        for (size_t c = 0; c < 3; ++c) {
            pixel[c] = static_cast<unsigned char>((pixel[c] * alpha + 255 * (255 - alpha) + 127) / 255);
        }
    }
    photo.alpha.clear();
}

void update_metadata(Photo& photo, const WriteOptions& options) {
    Metadata& metadata = photo.metadata;
    if (options.strips) {
        metadata = {};
    }
    update_exif(metadata.exif, photo.image->getWidth(), photo.image->getHeight());
    update_xmp(metadata.xmp);
    update_photoshop(metadata.photoshop);
}

Bytes encode_photo(Photo& photo, PhotoFormat format, const WriteOptions& options, const std::string& name) {
    const PhotoFormatInfo& info = format_info(format);
    if (!photo.alpha.empty() && !info.hasAlpha) {
        flatten(photo);
    }
    if (!options.subsampling.empty()) {
        photo.jpeg.subsampling = find_subsampling(options.subsampling)->value;
    }
    update_metadata(photo, options);
    const IccSpace space = icc_space(photo.metadata.icc);
    const bool canBeGray = info.format != PhotoFormat::kWebp && space != IccSpace::kRgb;
    photo.isGray = photo.isGray && canBeGray && has_gray_pixels(photo);
    if (space != IccSpace::kNone && space != (photo.isGray ? IccSpace::kGray : IccSpace::kRgb)) {
        photo.metadata.icc.clear();
        photo.warnings.emplace_back("the colour profile is not one for these pixels and is left out");
    }
    try {
        return info.write(photo, options.quality);
    } catch (const FormatError& error) {
        throw CommandError("cannot write " + name + ": " + error.what());
    } catch (const std::bad_alloc&) {
        throw CommandError("cannot write " + name + ": not enough memory");
    }
}

void write_photo(const std::string& path, Photo photo, const WriteOptions& options) {
    const Bytes file = encode_photo(photo, output_format(path, options, photo.format), options, path);
    warn(path, photo.warnings, false);
    write_file(path, file, options.noClobber);
}

}  // namespace korvane
