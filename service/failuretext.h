// Texts for an exception that no handler caught.
#pragma once

#include <QString>

#include <exception>

/// What failed, with a colon at its end, why in the words of the library or system, and what the user can do
/// about it.
struct FailureText {
    QString what;
    QString details;
    QString advice;

    [[nodiscard]] QString inShort() const { return what + advice; }
    [[nodiscard]] QString inFull() const { return what + details + QLatin1Char(' ') + advice; }
};

/// Knows the serial library's exceptions, std::exception and plain texts (const char*); anything else is an
/// unknown error. The pointer must not be null.
[[nodiscard]] FailureText failureText(const std::exception_ptr& failure);
