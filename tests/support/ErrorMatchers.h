#pragma once

#include <velmora/Error.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

// Runs `action` and checks that it throws velmora::Error with this number, source and
// description (an empty expectation is not checked).
inline ::testing::AssertionResult throwsError(const std::function<void()>& action, int number,
                                              const std::string& source = "",
                                              const std::string& description = "") {
    try {
        action();
    } catch (const velmora::Error& e) {
        if (e.number() == number && (source.empty() || e.source() == source) &&
            (description.empty() || e.description() == description)) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure()
               << "error " << e.number() << " from '" << e.source() << "': '" << e.description()
               << "', expected " << number << " from '" << source << "': '" << description << "'";
    } catch (const std::exception& e) {
        return ::testing::AssertionFailure() << "threw another exception: " << e.what();
    }
    return ::testing::AssertionFailure() << "threw nothing, expected error " << number;
}

// A platform error: number, source "Velmora" and its usual description.
inline ::testing::AssertionResult throwsPlatform(const std::function<void()>& action, int number) {
    return throwsError(action, number, "Velmora");
}
