// SPDX-License-Identifier: Apache-2.0
#include "lab/Performer.h"

#include <cxxabi.h>
#include <algorithm>
#include <cstdlib>
#include <typeinfo>

namespace nearcast::lab {

std::string kindOf(const std::exception& error) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(typeid(error).name(), nullptr, nullptr, &status), std::free);
    return status == 0 ? name.get() : typeid(error).name();
}

bool implements(const lines::SetDelegate& action, std::string_view method) {
    return std::find(action.implements->begin(), action.implements->end(), method) != action.implements->end();
}

template class PerformerOf<QXNearcastManager>;

}  // namespace nearcast::lab
