// Raw requests to a camera that is examined.
#include "link/camerasp.h"
#include "link/protocol/jsonenvelope.h"
#include "link/runcommand.h"

using namespace protocol;

namespace {

std::uint32_t msOf(std::chrono::milliseconds wait) {
    return static_cast<std::uint32_t>(wait.count());
}

/// One frame or envelope, whatever stands before it.
bool endsAnswer(ByteView bytes) {
    for (std::size_t first = 0; first < bytes.size(); ++first) {
        const ByteView rest = bytes.range(first, bytes.size());
        for (const AnswerForm* const form : {&frameForm, &jsonForm}) {
            if (rest.size() > 1 && startsAs(rest, *form))
                return isWholeAnswer(rest, *form);
        }
    }
    return false;
}

} // namespace

std::vector<std::uint8_t> CameraSp::probe(const std::vector<std::uint8_t>& request, const ProbeWait& wait) {
    return runCommand(*m_line, LineUser::command, {}, Bytes(), [&] {
        Bytes answer;
        m_line->setTimeouts(msOf(wait.first), msOf(wait.first));
        if (!request.empty())
            m_line->write(request);
        std::chrono::milliseconds limit = wait.first;
        while (m_line->read(answer, 1) > 0) {
            const auto next = endsAnswer(answer) ? wait.silence : wait.partial;
            if (next != limit)
                m_line->setTimeouts(msOf(next), msOf(next));
            limit = next;
        }
        m_line->setEnd(answer.empty() ? CommandEnd::noAnswer : CommandEnd::done);
        return answer;
    });
}
