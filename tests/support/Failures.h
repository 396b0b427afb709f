#pragma once

#include <string>

#include <gtest/gtest.h>

namespace TestSupport {

// What `read` makes of the failure of type E that `action` raises.
template <typename E, typename Action, typename Read>
std::string readFailure(Action action, Read read) {
    try {
        action();
    } catch (const E& failure) {
        return read(failure);
    }
    ADD_FAILURE() << "nothing of that type was raised";
    return "";
}

// Its text.
template <typename E, typename Action>
std::string messageOf(Action action) {
    return readFailure<E>(action, [](const E& failure) { return std::string(failure.what()); });
}

// Its service exception code and its text, "qvConfigurationError: no directory".
template <typename E, typename Action>
std::string reportOf(Action action) {
    return readFailure<E>(action, [](const E& failure) {
        EXPECT_STREQ(failure.getDetailedMessage().c_str(), failure.what());
        return failure.getServiceExceptionCode() + ": " + failure.getDetailedMessage();
    });
}

}  // namespace TestSupport
