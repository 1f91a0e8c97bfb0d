#include "tests/support/standard_error.h"

#include <unistd.h>

#include <sstream>

StandardErrorCapture::StandardErrorCapture() : m_File(std::tmpfile()), m_Saved(dup(STDERR_FILENO)) {
    std::fflush(stderr);
    dup2(fileno(m_File), STDERR_FILENO);
}

StandardErrorCapture::~StandardErrorCapture() {
    std::fflush(stderr);
    dup2(m_Saved, STDERR_FILENO);
    close(m_Saved);
    std::fclose(m_File);
}

std::string StandardErrorCapture::text() {
    std::fflush(stderr);
    std::string text;
    char block[4096];
    off_t at = 0;
    for (ssize_t count = 0; (count = pread(fileno(m_File), block, sizeof(block), at)) > 0; at += count) {
        text.append(block, static_cast<size_t>(count));
    }
    return text;
}

std::vector<std::string> StandardErrorCapture::log_lines() {
    const std::string prefix = "D/@@@: ";
    std::istringstream stream(text());
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        if (line.compare(0, prefix.size(), prefix) == 0) {
            lines.push_back(line.substr(prefix.size()));
        }
    }
    return lines;
}
