// Picture commands of both frame generations.
#include "link/camerasp.h"
#include "link/diagnostics.h"
#include "link/picturefile.h"
#include "link/runcommand.h"

using namespace protocol;
using namespace std::chrono_literals;

namespace {

std::string pictureName(unsigned id) {
    return std::to_string(id) + ".jpg";
}

unsigned statusOf(ByteView answer) {
    return answer.get(answer_layout::status);
}

/// The picture in a transfer answer.
ByteView pictureIn(ByteView answer, std::uint32_t size) {
    return answer.range(transferData, transferData + std::size_t{size});
}

/// The user may shift the codes of first-generation commands.
ExchangeRule withOffset(const CameraLine& line, const ExchangeRule& rule) {
    ExchangeRule shifted = rule;
    shifted.command = static_cast<Command>((code(rule.command) + line.pictureOffset.load()) & 0xFF);
    return shifted;
}

/// Captures and deletions: success is status 0.
bool runStatusCommand(CameraLine& line, const ExchangeRule& rule, ByteView payload, const char* failureText) {
    return runCommand(line, LineUser::command, failureText, false, [&] {
        const CameraLine::Answer answer = line.exchange(rule, payload);
        if (!answer.accepted) {
            diagnostics::line(failureText);
            return false;
        }
        if (statusOf(answer.bytes) == answer_result::success)
            return true;
        line.setEnd(CommandEnd::refused);
        return false;
    });
}

std::vector<RecordBytes> recordsIn(ByteView answer, const RecordForm& form) {
    std::vector<RecordBytes> records;
    for (const ByteView record : catalogueRecords(answer, form.size)) {
        diagnostics::line("图片数据:");
        records.push_back(std::make_unique<std::uint8_t[]>(form.size));
        std::copy(record.begin(), record.end(), records.back().get());
        diagnostics::line(unpaddedHexText(record));
        diagnostics::line("pic id:", form.parse(record).id);
    }
    return records;
}

std::vector<RecordBytes> readCatalogue(CameraLine& line, const ExchangeRule& rule, const RecordForm& form,
                                       const char* failureText) {
    const FailureLog log("command failed:", [&] { diagnostics::line(failureText, line.received()); });
    return runCommand(line, LineUser::command, log, std::vector<RecordBytes>(), [&] {
        const CameraLine::Answer answer = line.exchange(rule, {});
        if (!answer.accepted) {
            diagnostics::line(failureText, answer.bytes.size());
            return std::vector<RecordBytes>();
        }
        diagnostics::line("pic num:", statusOf(answer.bytes));
        std::vector<RecordBytes> records = recordsIn(answer.bytes, form);
        if (records.empty())
            line.setEnd(CommandEnd::noPictures);
        return records;
    });
}

/// Requests the picture and reads until it is complete, without a limit of time.
CameraLine::Answer download(CameraLine& line, const ExchangeRule& rule, ByteView request,
                            std::uint32_t size) {
    CameraLine::Answer answer = line.exchange(rule, request, std::uint64_t{size} + transferOverhead);
    diagnostics::line("recv size:", std::to_string(answer.bytes.size()),
                      "  picTotalSize:", std::to_string(size));
    diagnostics::line("readResult:", statusOf(answer.bytes));
    return answer;
}

bool writeOrTell(CameraLine& line, const std::string& name, ByteView picture) {
    const bool written = writePicture(name, picture, line.pictureFolder);
    if (!written)
        line.setEnd(CommandEnd::fileUnusable);
    return written;
}

} // namespace

bool CameraSp::originCapture() {
    return runStatusCommand(*m_line, withOffset(*m_line, rules::originCapture), {}, "error in originCapture");
}

bool CameraSp::captureV1() {
    return runStatusCommand(*m_line, rules::captureV1, {}, "error in captureV1");
}

std::vector<RecordBytes> CameraSp::getOriginPicInfos() {
    return readCatalogue(*m_line, withOffset(*m_line, rules::getOriginPicInfos), originRecordForm,
                         "error in getOriginPicInfos cmd 0x07  ");
}

std::vector<RecordBytes> CameraSp::getPicInfosV1() {
    return readCatalogue(*m_line, rules::getPicInfosV1, v1RecordForm, "error in getPicInfos cmd 0xc7  ");
}

bool CameraSp::delOriginPic(std::uint8_t id) {
    return runStatusCommand(*m_line, withOffset(*m_line, rules::delOriginPic), Bytes{id},
                            "error in delOriginPic deletepic");
}

bool CameraSp::delPicV1(std::uint16_t id, std::uint32_t date, std::uint8_t gid) {
    return runStatusCommand(*m_line, rules::delPicV1, v1DeleteRequest(id, date, gid),
                            "error in delPicV1 deletepic");
}

void CameraSp::getOriginTargetPic(std::uint8_t id, std::uint32_t size) {
    runCommand(*m_line, LineUser::download, {}, false, [&] {
        const CameraLine::Answer answer = download(*m_line, withOffset(*m_line, rules::getOriginTargetPic),
                                                   originReadRequest(id, size), size);
        if (statusOf(answer.bytes) != answer_result::success) {
            m_line->setEnd(CommandEnd::refused);
            diagnostics::line("read result error");
            return false;
        }
        diagnostics::line("read over");
        return writeOrTell(*m_line, pictureName(id), pictureIn(answer.bytes, size));
    });
}

void CameraSp::getTargetPicV1(std::uint16_t id, std::uint32_t size) {
    runCommand(*m_line, LineUser::download, {}, false, [&] {
        // The read result of this generation means nothing.
        const CameraLine::Answer answer =
            download(*m_line, rules::getTargetPicV1, v1ReadRequest(id, size), size);
        diagnostics::line("read over");
        return writeOrTell(*m_line, pictureName(id), pictureIn(answer.bytes, size));
    });
}

bool CameraSp::takePic() {
    const char* failureText = "error in takepic deletepic"; // of the step under way
    const auto failed = [&] {
        if (failureText != nullptr)
            diagnostics::line(failureText);
        return false;
    };
    return runCommand(*m_line, LineUser::download, FailureLog("command failed:", failed), false, [&] {
        const Bytes everything{originDeleteAll};
        const CameraLine::Answer deletion = m_line->exchange(rules::takePicDelete, everything);
        if (!deletion.accepted)
            return failed();
        diagnostics::line("start of takepic delete result is:", statusOf(deletion.bytes));
        pause(1s);

        failureText = "error in takepic cmd 0x06";
        const CameraLine::Answer captured = m_line->exchange(rules::takePicCapture, {});
        if (!captured.accepted)
            return failed();
        if (statusOf(captured.bytes) != answer_result::success)
            diagnostics::line("error in takepic cmd 0x06 parse error"); // and goes on
        const std::uint8_t id = ByteView(captured.bytes).get(inFrame(capture_answer::id));
        diagnostics::line("pic_id:", unsigned{id});
        diagnostics::line("start sleeep for capture");
        pause(1s);
        diagnostics::line("end sleep for capture");

        failureText = "error in takepic cmd 0x07";
        const CameraLine::Answer catalogue = m_line->exchange(rules::takePicCatalogue, {});
        if (!catalogue.accepted)
            return failed();
        diagnostics::line("pic num:", statusOf(catalogue.bytes));
        const Bytes sizeBytes = pictureSizeBytes(catalogue.bytes, id);
        diagnostics::line("size-trans:", unsigned{sizeBytes[0]}, "  ", unsigned{sizeBytes[1]}, "  ",
                          unsigned{sizeBytes[2]}, "  ", unsigned{sizeBytes[3]});
        const std::uint32_t size = ByteView(sizeBytes).get(Field<std::uint32_t>{0});
        pause(1s);

        failureText = nullptr; // a download has no line of its own
        const CameraLine::Answer picture =
            download(*m_line, rules::takePicRead, originReadRequest(id, size), size);
        diagnostics::line("read over");
        const bool written = writePicture("a.jpg", pictureIn(picture.bytes, size), m_line->pictureFolder);
        pause(1s);

        failureText = "error in takepic deletepic";
        const CameraLine::Answer deletedAgain = m_line->exchange(rules::takePicDeleteAgain, everything);
        if (!deletedAgain.accepted)
            return failed();
        diagnostics::line("end of takepic result is:", statusOf(deletedAgain.bytes));
        if (!written)
            m_line->setEnd(CommandEnd::fileUnusable);
        return true;
    });
}
