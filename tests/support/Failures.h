#pragma once

#include <string>

#include <gtest/gtest.h>

namespace TestSupport {

// Returns the result of `read` for the failure of type E that `action` raises.
template <typename E, typename Action, typename Read>
std::string readFailure(Action action, Read read) {
    try {
        action();
    } catch (const E& failure) {
        return read(failure);
    }
    ADD_FAILURE() << "no exception of that type was raised";
    return "";
}

// Returns the text of the failure.
template <typename E, typename Action>
std::string messageOf(Action action) {
    return readFailure<E>(action, [](const E& failure) { return std::string(failure.what()); });
}

// Returns the service exception code and the text of the failure, as in "qvConfigurationError: no directory".
template <typename E, typename Action>
std::string reportOf(Action action) {
    return readFailure<E>(action, [](const E& failure) {
        EXPECT_STREQ(failure.getDetailedMessage().c_str(), failure.what());
        return failure.getServiceExceptionCode() + ": " + failure.getDetailedMessage();
    });
}

}  // namespace TestSupport
