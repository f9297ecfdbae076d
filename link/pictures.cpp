// Picture commands of both frame generations.
#include "link/camerasp.h"
#include "link/diagnostics.h"
#include "link/guarded.h"
#include "link/picturefile.h"

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

} // namespace

bool CameraSp::capture(const ExchangeRule& rule, const char* failureText) {
    return guarded(false, [&] {
        const Answer answer = exchange(rule, {});
        if (!answer.accepted) {
            diagnostics::line(failureText);
            return false;
        }
        return statusOf(answer.bytes) == 0;
    });
}

bool CameraSp::originCapture() {
    return capture(withOffset(rules::originCapture), "error in originCapture");
}

bool CameraSp::captureV1() {
    return capture(rules::captureV1, "error in captureV1");
}

std::vector<RecordBytes> CameraSp::readCatalogue(const ExchangeRule& rule, const RecordForm& form,
                                                 const char* failureText) {
    return guarded(std::vector<RecordBytes>(), [&]() -> std::vector<RecordBytes> {
        const Answer answer = exchange(rule, {});
        if (!answer.accepted) {
            diagnostics::line(failureText, answer.bytes.size());
            return {};
        }
        diagnostics::line("pic num:", statusOf(answer.bytes));
        std::vector<RecordBytes> records;
        for (const ByteView record : catalogueRecords(answer.bytes, form.size)) {
            diagnostics::line("图片数据:");
            records.push_back(std::make_unique<std::uint8_t[]>(form.size));
            std::copy(record.begin(), record.end(), records.back().get());
            diagnostics::line(unpaddedHexText(record));
            diagnostics::line("pic id:", form.parse(record).id);
        }
        return records;
    });
}

std::vector<RecordBytes> CameraSp::getOriginPicInfos() {
    return readCatalogue(withOffset(rules::getOriginPicInfos), originRecordForm,
                         "error in getOriginPicInfos cmd 0x07  ");
}

std::vector<RecordBytes> CameraSp::getPicInfosV1() {
    return readCatalogue(rules::getPicInfosV1, v1RecordForm, "error in getPicInfos cmd 0xc7  ");
}

bool CameraSp::deletePictures(const ExchangeRule& rule, ByteView payload, const char* failureText) {
    return guarded(false, [&] {
        const Answer answer = exchange(rule, payload);
        if (!answer.accepted) {
            diagnostics::line(failureText);
            return false;
        }
        return statusOf(answer.bytes) == 0;
    });
}

bool CameraSp::delOriginPic(std::uint8_t id) {
    return deletePictures(withOffset(rules::delOriginPic), Bytes{id}, "error in delOriginPic deletepic");
}

bool CameraSp::delPicV1(std::uint16_t id, std::uint32_t date, std::uint8_t gid) {
    return deletePictures(rules::delPicV1, v1DeleteRequest(id, date, gid), "error in delPicV1 deletepic");
}

/// Asks for the picture and reads on until all of it is there, however long that takes.
CameraSp::Answer CameraSp::download(const ExchangeRule& rule, ByteView request, std::uint32_t size) {
    Answer answer = exchange(rule, request, std::uint64_t{size} + transferOverhead);
    diagnostics::line("recv size:", std::to_string(answer.bytes.size()),
                      "  picTotalSize:", std::to_string(size));
    diagnostics::line("readResult:", statusOf(answer.bytes));
    return answer;
}

void CameraSp::getOriginTargetPic(std::uint8_t id, std::uint32_t size) {
    guarded(false, [&] {
        const Answer answer =
            download(withOffset(rules::getOriginTargetPic), originReadRequest(id, size), size);
        if (statusOf(answer.bytes) != 0) {
            diagnostics::line("read result error");
            return false;
        }
        diagnostics::line("read over");
        return writePicture(pictureName(id), pictureIn(answer.bytes, size));
    });
}

void CameraSp::getTargetPicV1(std::uint16_t id, std::uint32_t size) {
    guarded(false, [&] {
        // Cameras of this generation state a read result that is not kept: the picture counts whatever it is.
        const Answer answer = download(rules::getTargetPicV1, v1ReadRequest(id, size), size);
        diagnostics::line("read over");
        return writePicture(pictureName(id), pictureIn(answer.bytes, size));
    });
}

bool CameraSp::takePic() {
    const auto failed = [](const char* text) {
        diagnostics::line(text);
        return false;
    };
    return guarded(false, [&] {
        const Bytes everything{originDeleteAll};
        const Answer deletion = exchange(rules::takePicDelete, everything);
        if (!deletion.accepted)
            return failed("error in takepic deletepic");
        diagnostics::line("start of takepic delete result is:", statusOf(deletion.bytes));
        pause(1s);

        const Answer captured = exchange(rules::takePicCapture, {});
        if (!captured.accepted)
            return failed("error in takepic cmd 0x06");
        if (statusOf(captured.bytes) != 0)
            diagnostics::line("error in takepic cmd 0x06 parse error"); // and goes on
        const std::uint8_t id = ByteView(captured.bytes).get(inPayload<std::uint8_t>(1));
        diagnostics::line("pic_id:", unsigned{id});
        diagnostics::line("start sleeep for capture");
        pause(1s);
        diagnostics::line("end sleep for capture");

        const Answer catalogue = exchange(rules::takePicCatalogue, {});
        if (!catalogue.accepted)
            return failed("error in takepic cmd 0x07");
        diagnostics::line("pic num:", statusOf(catalogue.bytes));
        const Bytes sizeBytes = pictureSizeBytes(catalogue.bytes, id);
        diagnostics::line("size-trans:", unsigned{sizeBytes[0]}, "  ", unsigned{sizeBytes[1]}, "  ",
                          unsigned{sizeBytes[2]}, "  ", unsigned{sizeBytes[3]});
        const std::uint32_t size = ByteView(sizeBytes).get(Field<std::uint32_t>{0});
        pause(1s);

        const Answer picture = download(rules::takePicRead, originReadRequest(id, size), size);
        diagnostics::line("read over");
        writePicture("a.jpg", pictureIn(picture.bytes, size));
        pause(1s);

        const Answer deletedAgain = exchange(rules::takePicDeleteAgain, everything);
        if (!deletedAgain.accepted)
            return failed("error in takepic deletepic");
        diagnostics::line("end of takepic result is:", statusOf(deletedAgain.bytes));
        return true;
    });
}
