#include "link/guarded.h"

#include <exception>

std::string exceptionText() {
    try {
        throw;
    } catch (const char* text) {
        return text;
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "unknown error";
    }
}
