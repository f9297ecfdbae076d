// The settings windows on the recording library.
#pragma once

#include "tests/dialogs/dialogtest.h"
#include "tests/dialogs/propertycamera.h"

#include <string>
#include <vector>

/// Records every request.
class RecordedDialogTest : public DialogTest {
protected:
    RecordedDialogTest() { openLink("COM7"); }
    ~RecordedDialogTest() override { endLinkAndWindows(); }

    /// Requests since forgetRequests(), as hexadecimal text.
    [[nodiscard]] std::vector<std::string> requests() const {
        std::vector<std::string> result;
        for (const auto& bytes : fake_serial::writes())
            result.push_back(fake_serial::hex(bytes));
        result.erase(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(m_forgotten));
        return result;
    }
    void forgetRequests() { m_forgotten = fake_serial::writes().size(); }

    PropertyCamera m_camera;

private:
    std::size_t m_forgotten = 0;
};
