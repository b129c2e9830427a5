// SPDX-License-Identifier: Apache-2.0
#include "record/OutputFile.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace nearcast::cli {

OutputFile::OutputFile(std::string path) : path_(std::move(path)), file_(std::fopen(path_.c_str(), "wbe")) {
    if (!file_) fail("cannot be opened");
}

void OutputFile::write(std::string_view bytes) {
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
    if (!written || std::fflush(file_.get()) != 0) fail("cannot be written");
}

void OutputFile::fail(const char* what) const {
    throw std::system_error(errno, std::generic_category(), path_ + ": " + what);
}

}  // namespace nearcast::cli
