// SPDX-License-Identifier: Apache-2.0
// How every command reads and writes photos, with the options that go with it.
//
// The functions throw CommandError with a text that names the file and the cause.
#ifndef KORVANE_TOOLS_PHOTO_PHOTO_IO_H_
#define KORVANE_TOOLS_PHOTO_PHOTO_IO_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "tools/photo/photo.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace korvane {

struct ReadOptions {
    // Damage is an error.
    bool isStrict = false;
};

struct WriteOptions {
    std::string format;
    std::string subsampling;
    // 0: that of the input.
    int quality = 0;
    bool strips = false;
    bool noClobber = false;
};

// Of a command that makes one photo out of one, or does so with many.
struct PhotoOptions {
    std::vector<std::string> inputs;
    // 0: as many as there are processors.
    int jobs = 0;
    bool isQuiet = false;
    bool isDryRun = false;
    bool isBatch = false;
    // The photo at hand, one of the inputs. The output may be empty where a command only reports.
    std::string input;
    std::string output;
    ReadOptions read;
    WriteOptions write;
};

// Add --strict, and --format, --quality, --subsampling, --strip and --no-clobber. Where -n is taken, the last has only
// its long name.
void add_read_options(CLI::App& app, ReadOptions& options);
void add_write_options(CLI::App& app, WriteOptions& options);

void add_no_clobber(CLI::App& app, bool& noClobber);

// Add the input, the output, and the options above.
void add_input(CLI::App& app, PhotoOptions& options);
CLI::Option* add_output(CLI::App& app, std::string& output, WriteOptions& options);
CLI::Option* add_photo_options(CLI::App& app, PhotoOptions& options);

// The photo in a file or, for "-", on standard input, upright and in the given format (RGB or RGBA). Damage that was
// stepped over gives one line on standard error.
Photo read_photo(const std::string& path, ImageFormatType format = IMAGE_FORMAT_TYPE_RGB,
                 const ReadOptions& options = {});

// The same for a file in memory, which messages call `name`. Damage is left in photo.warnings.
Photo decode_photo(const Bytes& file, const std::string& name, ImageFormatType format, size_t maxPixels = SIZE_MAX);

// Writes in the format that the options or the path's extension name; on a stream without either, in that of the
// photo's own file. Transparent parts become white where the format has no transparency.
void write_photo(const std::string& path, Photo photo, const WriteOptions& options = {});

// The file that write_photo writes. Warnings are left in photo.warnings.
Bytes encode_photo(Photo& photo, PhotoFormat format, const WriteOptions& options, const std::string& name);

// Throws what write_photo would throw, as far as can be seen before the work.
void check_output(const std::string& path, const WriteOptions& options);

// In either case; the extension without its dot.
bool has_extension(const std::string& path, const std::string& extension);

// The format that write_photo would take.
PhotoFormat output_format(const std::string& path, const WriteOptions& options, PhotoFormat own);

// The path's extension is one of the named format or, without a name, of any format.
bool names_format(const std::string& path, const std::string& format);

// Where a command reports on a photo: standard error when the photo itself goes to standard output.
std::ostream& report_stream(const std::string& output);

// Lines about the photo. In a batch each begins with the photo's name, unless they hold it already.
void print_report(const PhotoOptions& options, const std::string& lines, bool areNamed);

// Lays the photo over white and drops its alpha.
void flatten(Photo& photo);

// What the output carries besides its pixels.
void update_metadata(Photo& photo, const WriteOptions& options);

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_PHOTO_IO_H_
