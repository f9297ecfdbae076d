#include "link/guarded.h"

#include <serial/serial.h>

#include <exception>

ExceptionWords describeException() {
    try {
        throw;
    } catch (const char* text) {
        return {text, {}};
    } catch (serial::IOException& error) { // its error number is not readable through a const reference
        return {error.what(), error.getErrorNumber()};
    } catch (const std::exception& error) {
        return {error.what(), {}};
    } catch (...) {
        return {};
    }
}

std::string exceptionText() {
    return describeException().text.value_or("unknown error");
}
