// A camera with properties on the recording library.
#pragma once

#include "tests/fake/fakeserial.h"
#include "tests/support/answers.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

/// Answers reads (command 2) and writes (command 3) of properties. Thread-safe; the script may change at any
/// time.
class PropertyCamera {
public:
    using Bytes = fake_serial::Bytes;

    PropertyCamera() {
        fake_serial::reset();
        fake_serial::onWrite([this](const Bytes& request) { answer(request); });
    }
    ~PropertyCamera() { fake_serial::onWrite(nullptr); }
    PropertyCamera(const PropertyCamera&) = delete;
    PropertyCamera& operator=(const PropertyCamera&) = delete;

    /// Reads of the property give these values in turn, repeatedly.
    void hold(std::uint8_t id, std::vector<Bytes> values) {
        const std::lock_guard lock(m_mutex);
        m_values[id] = {std::move(values), 0};
    }
    /// Payload of the answer to every read of the property.
    void answerReadsWith(std::uint8_t id, Bytes payload) {
        const std::lock_guard lock(m_mutex);
        m_payloads[id] = std::move(payload);
    }
    /// Bytes of the answer to every write (empty: no answer). By default writes are accepted.
    void answerWritesWith(Bytes answer) {
        const std::lock_guard lock(m_mutex);
        m_writesAccepted = false;
        m_writeAnswer = std::move(answer);
    }
    /// From now on nothing is answered.
    void fallSilent() {
        const std::lock_guard lock(m_mutex);
        m_silent = true;
    }

private:
    struct Turn {
        std::vector<Bytes> values;
        std::size_t next;
    };

    static constexpr std::uint8_t readCommand = 2;
    static constexpr std::uint8_t writeCommand = 3;

    void answer(const Bytes& request) {
        const std::lock_guard lock(m_mutex);
        if (m_silent || request.size() < 11)
            return;
        const std::uint8_t command = request[3];
        const std::uint8_t id = request[8];
        if (command == readCommand)
            answerRead(id);
        else if (command == writeCommand)
            answerWrite(id, Bytes(request.begin() + 9, request.end() - 2));
    }

    void answerRead(std::uint8_t id) {
        if (const auto payload = m_payloads.find(id); payload != m_payloads.end()) {
            fake_serial::willRead(answers::frame(readCommand, payload->second));
            return;
        }
        const auto turn = m_values.find(id);
        if (turn == m_values.end())
            return;
        Bytes payload{id, 0};
        const Bytes& value = turn->second.values[turn->second.next++ % turn->second.values.size()];
        payload.insert(payload.end(), value.begin(), value.end());
        fake_serial::willRead(answers::frame(readCommand, payload));
    }

    void answerWrite(std::uint8_t id, const Bytes& value) {
        if (!m_writesAccepted) {
            fake_serial::willRead(m_writeAnswer);
            return;
        }
        m_values[id] = {{value}, 0};
        fake_serial::willRead(answers::frame(writeCommand, {id, 0}));
    }

    std::mutex m_mutex;
    std::map<std::uint8_t, Turn> m_values;
    std::map<std::uint8_t, Bytes> m_payloads;
    bool m_writesAccepted = true;
    Bytes m_writeAnswer;
    bool m_silent = false;
};
