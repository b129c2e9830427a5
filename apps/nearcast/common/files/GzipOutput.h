// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string_view>

namespace nearcast::cli {

/// Packs bytes as gzip. Without a name or a time in it, so that the same bytes are packed alike every time.
class GzipOutput {
public:
    /// Takes packed bytes; what it throws passes through.
    using Out = std::function<void(std::string_view bytes)>;

    /// @param eachAtOnce hand out with each piece all that unpacking up to its end needs, at the price of some bytes
    /// @throws std::bad_alloc
    GzipOutput(Out out, bool eachAtOnce);
    ~GzipOutput();
    GzipOutput(const GzipOutput&) = delete;
    GzipOutput& operator=(const GzipOutput&) = delete;

    void write(std::string_view bytes);
    /// Ends the packed data; nothing is written after that. Without it they are cut.
    void finish();

private:
    struct Stream;

    Out out_;
    const bool eachAtOnce_;
    std::unique_ptr<Stream> stream_;
};

}  // namespace nearcast::cli
