# SPDX-License-Identifier: Apache-2.0
# cmake -DOUTPUT=FILE -DFUNCTION=NAME -DFILES=LIST -P: see nearcast_embed.

cmake_policy(VERSION 3.25)

set(arrays "")
set(assets "")
set(index 0)
foreach(file IN LISTS FILES)
    get_filename_component(name ${file} NAME)
    file(READ ${file} octets HEX)
    file(SHA256 ${file} hash)
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," octets "${octets}")
    # Lines of a length that compilers and editors bear.
    string(REGEX REPLACE "(('..x..',)('..x..',)('..x..',)('..x..',)('..x..',)('..x..',)('..x..',)('..x..',))" "\\1\n" octets
        "${octets}")
    string(APPEND arrays "constexpr char octets${index}[] = {${octets}'\\0'};\n")
    string(APPEND assets
        "        {\"${name}\", {static_cast<const char*>(octets${index}), sizeof octets${index} - 1}, \"${hash}\"},\n")
    math(EXPR index "${index} + 1")
endforeach()
file(WRITE ${OUTPUT} "// Made by cmake/EmbedFiles.cmake.
#include \"web/Page.h\"

#include <span>

namespace nearcast::cli {

namespace {

${arrays}
}  // namespace

std::span<const Asset> ${FUNCTION}() noexcept;

std::span<const Asset> ${FUNCTION}() noexcept {
    static constexpr Asset assets[] = {
${assets}    };
    return assets;
}

}  // namespace nearcast::cli
")
