// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/json/JSONSerialization.h"

#include <cstddef>
#include <string_view>

namespace nearcast {

/// What the JSON library read last of a text that it does not take.
struct LastRead {
    enum class Kind {
        token,     ///< a whole token, which may not stand there
        number,    ///< a number that is too large
        fragment,  ///< what would become a token, but for its last octet
    };
    std::size_t last = 0;    ///< the last octet's place; that behind the text where it ended
    std::size_t length = 0;  ///< octets of a token or a number, the last one included
    Kind kind = Kind::fragment;
    bool complete = false;  ///< a whole value stands before it
};

/// What is wrong with the text, in words of our own: they stay the same whichever version of the library it is.
JSONProblem mistakeAt(std::string_view data, const LastRead& read);

/// The same of a text whose objects and lists lie in one another more than `depth` deep. They are well-formed up to
/// there.
JSONProblem tooDeep(std::string_view data, int depth);

}  // namespace nearcast
