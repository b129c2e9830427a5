// SPDX-License-Identifier: Apache-2.0
#include "support/Trace.h"

#include <nearcast/LogWriter.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace nearcast {

namespace {

bool isControl(unsigned char byte) { return byte < 0x20 || byte == 0x7f; }
/// U+0080 to U+009F, which terminals obey as they do the others.
bool isSecondControl(std::string_view text, std::size_t index) {
    if (text[index] != '\xc2' || index + 1 == text.size()) return false;
    const auto next = static_cast<unsigned char>(text[index + 1]);
    return next >= 0x80 && next <= 0x9f;
}

void appendHex(std::string& line, char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    line.append("\\x").append(1, digits[value >> 4]).append(1, digits[value & 15]);
}

void appendEscaped(std::string& line, std::string_view text) {
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char letter = text[index];
        switch (letter) {
            case '\\': line += "\\\\"; break;
            case '\n': line += "\\n"; break;
            case '\r': line += "\\r"; break;
            case '\t': line += "\\t"; break;
            default:
                if (isSecondControl(text, index)) {
                    appendHex(line, letter);
                    appendHex(line, text[++index]);
                } else if (isControl(static_cast<unsigned char>(letter))) {
                    appendHex(line, letter);
                } else {
                    line += letter;
                }
        }
    }
}

void renderLine(std::string& line, const LogRecord& record) {
    line.clear();
    trace::append(line, record.logType);
    line += '\t';
    trace::append(line, record.logLevel);
    line += '\t';
    trace::append(line, Pointer{record.objectAddress});
    line += '\t';
    appendEscaped(line, record.fileName);
    line += ':';
    trace::append(line, record.lineNumber);
    line += '\t';
    appendEscaped(line, record.methodName);
    line += '\t';
    appendEscaped(line, record.anyString);
    line += '\n';
}

/// A file that lines are appended to, each at once.
class LineFile {
public:
    explicit LineFile(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "ae"), &std::fclose) {
        if (!file_) throw std::system_error(errno, std::generic_category(), "trace file '" + path + "'");
        std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // a line is one write
    }

    void append(const LogRecord& record) {
        renderLine(line_, record);
        if (missing_ != 0 && !tellMissing()) {
            ++missing_;
            return;
        }
        if (!put(line_)) fail(errno);
    }

private:
    bool put(std::string_view line) {
        if (broken_) {
            if (std::fputc('\n', file_.get()) == EOF) return clear();
            broken_ = false;
        }
        std::size_t written = 0;
        do {
            errno = 0;
            written += std::fwrite(line.data() + written, 1, line.size() - written, file_.get());
            if (written == line.size()) return true;
            clear();
        } while (errno == EINTR);
        broken_ = written != 0;
        return false;
    }

    bool clear() {
        const int problem = errno;
        std::clearerr(file_.get());
        errno = problem;
        return false;
    }

    bool tellMissing() {
        std::string text;
        trace::append(text, missing_);
        text += " records could not be written here";
        std::string line;
        renderLine(line,
                   {QXLogTypeError, 0, nullptr, __builtin_FILE(), __builtin_LINE(), "+[LogWriter fileSink]", text});
        if (!put(line)) return false;
        missing_ = 0;
        return true;
    }

    [[noreturn]] void fail(int problem) {
        ++missing_;
        throw std::system_error(problem, std::generic_category(), "trace file '" + path_ + "'");
    }

    std::string path_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    std::string line_;
    std::uint64_t missing_ = 0;  ///< lines lost since writing last worked
    bool broken_ = false;        ///< the last line was written in part
};

}  // namespace

LogWriter::Sink LogWriter::standardErrorSink() {
    return [line = std::string()](const LogRecord& record) mutable {
        renderLine(line, record);
        std::fwrite(line.data(), 1, line.size(), stderr);
    };
}

LogWriter::Sink LogWriter::fileSink(const std::string& path) {
    return [file = std::make_shared<LineFile>(path)](const LogRecord& record) { file->append(record); };
}

}  // namespace nearcast
