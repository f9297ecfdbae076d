// A camera without hardware.
#pragma once

#include "emulator/camera/answerqueue.h"
#include "emulator/camera/camerarecord.h"
#include "emulator/camera/camerastate.h"
#include "emulator/camera/fault.h"
#include "emulator/camera/linecamera.h"
#include "trace/framescanner.h"

namespace emulator {

using trace::FrameScanner;

/// The camera's side of every command, as a state machine: no clock, no input or output, no threads. The
/// caller gives the time and carries the bytes; one call at a time (CameraFront guards that).
///
///     camera.receive(bytes, now);               // queues answers with the time they are due
///     ... until camera.nextDue(): write(camera.takeDue(now));
///
/// Checks frames strictly: it records a wrong length, check code or address and never answers. It is silent
/// during a restart, and takes nothing for a frame during an upload's raw data.
class VirtualCamera final : public LineCamera {
public:
    explicit VirtualCamera(CameraType type = CameraType::ostra);
    explicit VirtualCamera(CameraSettings settings);

    // --- the line ----------------------------------------------------------------------------------------
    void receive(ByteView bytes, Time now) override;
    [[nodiscard]] std::optional<Time> nextDue() const override;
    /// Also lets time pass inside the camera (upload silence, end of a restart).
    [[nodiscard]] Bytes takeDue(Time now) override;
    [[nodiscard]] bool hangUpDue(Time now) override;
    [[nodiscard]] Time readingPausedUntil() const override { return m_readingPausedUntil; }
    void setLineSpeed(std::optional<std::uint32_t> baudRate) override { m_lineSpeed = baudRate; }
    /// Discards half-received and unsent bytes and interrupts a running upload; the stored state stays.
    void lineReopened(Time now);

    // --- for tests and demonstrations ----------------------------------------------------------------------
    [[nodiscard]] CameraSettings& settings() { return m_settings; }
    [[nodiscard]] CameraState& state() { return m_state; }
    [[nodiscard]] const CameraRecord& record() const { return m_record; }
    void clearRecord() { m_record = {}; }
    [[nodiscard]] FaultPlan& faults() { return m_faults; }
    /// As parseFault; throws FaultError.
    void addFault(std::string_view text) { m_faults.add(parseFault(text)); }
    [[nodiscard]] bool booting(Time now) const { return now < m_state.bootingUntil; }
    /// In an upload's raw data.
    [[nodiscard]] bool uploading() const { return m_upload.has_value(); }
    /// Takes a picture like the capture command; the catalogue shows it from the given time on.
    const Picture& takePicture(Time visibleFrom);
    /// The handler gets every line for people, in the caller's thread; it must not call the camera.
    void onEvent(std::function<void(const Event&)> handler) { m_onEvent = std::move(handler); }

private:
    struct Request {
        RequestKey key;
        std::uint8_t lineCode = 0;
        std::uint8_t address = 0;
        Bytes payload;
        Time at{0};
        FaultSet faults;
    };
    struct Reply {
        Time at{0}; ///< time of the first byte
        Bytes payload;
        std::optional<std::size_t> resultAt; ///< offset of the result code in the payload
        std::size_t valueFrom = 0;           ///< offset of the value; 0: none
        bool silent = false;
        bool framed = true;
        bool json = false;
        /// Called with the payload to be sent, after the faults.
        std::function<void(ByteView payload)> onAnswer;

        /// A payload of the result only.
        void setStatus(bool success);
        /// A payload of id and result.
        void setProperty(std::uint8_t id, bool success);
        void addValue(ByteView value);
    };
    struct UploadKind;
    struct ActiveUpload {
        const UploadKind* kind = nullptr;
        std::size_t recordIndex = 0;
        Bytes kept; ///< part of the file that the camera holds
        std::size_t expected = 0;
        Time deadline{0}; ///< then the upload is abandoned
        FaultSet faults;
    };
    using Handler = void (VirtualCamera::*)(const Request&, Reply&);
    struct CommandRow;
    static const CommandRow* rowOf(std::uint16_t code);

    // virtualcamera.cpp
    void advance(Time now);
    void readItems(Time now);
    void readItem(const FrameScanner::Item& item, Time now);
    void receiveFrame(Bytes bytes, Time now);
    void receiveJson(Bytes bytes, Time now);
    void noteBadFrame(const FrameScanner::Item& item, Time now);
    [[nodiscard]] RequestKey classify(std::uint8_t lineCode, ByteView payload) const;
    [[nodiscard]] bool canBeDeleted(std::uint8_t id) const;
    [[nodiscard]] bool isPictureRequest(std::uint8_t base, std::uint8_t lineCode, ByteView payload) const;
    [[nodiscard]] bool knows(const CommandRow& row) const;
    [[nodiscard]] bool wakesForHeartbeat(const RequestKey& key, Time now);
    void serve(Request request);
    void note(Time at, Event::Kind kind, std::string text) const;
    [[nodiscard]] std::string describe(const RequestKey& key) const;

    // answers.cpp: from a reply to timed bytes
    [[nodiscard]] Reply startReply(const Request& request);
    [[nodiscard]] Time delayOf(const Request& request);
    void applyPayloadFaults(const Request& request, Reply& reply) const;
    [[nodiscard]] Bytes wrapped(const Request& request, const Reply& reply) const;
    void sendReply(const Request& request, const Reply& reply);
    void sendPieces(const Request& request, const Reply& reply, Bytes bytes);

    // propertycommands.cpp
    void heartbeat(const Request& request, Reply& reply);
    void getProperty(const Request& request, Reply& reply);
    void setProperty(const Request& request, Reply& reply);
    void getInfo(const Request& request, Reply& reply);
    void gyroTest(const Request& request, Reply& reply);
    void reboot(const Request& request, Reply& reply);
    void resetToFactory(const Request& request, Reply& reply);
    void door(const Request& request, Reply& reply);
    [[nodiscard]] std::optional<Bytes> propertyValue(std::uint8_t id, Time now);
    [[nodiscard]] Bytes nextOrientation(Time now);
    void restart(Time from, Time duration, const FaultSet& faults);

    // picturecommands.cpp
    void capture(const Request& request, Reply& reply);
    void catalogue(const Request& request, Reply& reply);
    void deletePictures(const Request& request, Reply& reply);
    void readPicture(const Request& request, Reply& reply);
    [[nodiscard]] Picture* findPicture(std::uint16_t id, bool byLowByte);
    [[nodiscard]] std::uint16_t nextPictureId();

    // uploadcommands.cpp
    void announceUpload(const Request& request, Reply& reply);
    void announceAppV1(const Request& request, Reply& reply);
    void packetV1(const Request& request, Reply& reply);
    static const UploadKind* uploadKindOf(std::uint16_t code);
    [[nodiscard]] std::uint32_t resumeOffset(const UploadRecord& upload, const FaultSet& faults) const;
    [[nodiscard]] Bytes heldPrefix(const UploadRecord& upload) const;
    void startTransfer(ActiveUpload upload, UploadRecord record);
    void receiveRaw(ByteView bytes, Time now);
    void strikeTransfer(ActiveUpload& upload, std::size_t before, std::size_t after, Time now);
    void finishTransfer(Time now);
    void breakOffTransfer(Time now);

    // jsoncommands.cpp
    void serveJson(const Request& request, Reply& reply);
    void jsonProperty(const Request& request, Reply& reply);
    void jsonPicture(const std::map<std::string, std::string>& values, const Request& request, Reply& reply);

    CameraSettings m_settings;
    CameraState m_state;
    CameraRecord m_record;
    FaultPlan m_faults;
    std::function<void(const Event&)> m_onEvent;

    FrameScanner m_scanner;
    Time m_lastByteAt{0};
    AnswerQueue m_queue;
    Bytes m_heldBack; ///< an answer sent just before the next one
    std::optional<Time> m_hangUpAt;
    Time m_readingPausedUntil{0};
    std::optional<std::uint32_t> m_lineSpeed;
    std::vector<std::uint32_t> m_delaysTaken; ///< by range of settings().delays
    Time m_restsUntil{0};

    bool m_restartUnnoticed = false;                 ///< its end is not reported yet
    std::optional<std::uint32_t> m_heartbeatsToWake; ///< ends a restart instead of a time
    std::optional<Time> m_lastOrientationRead;
    std::size_t m_nextOrientation = 0;
    std::optional<std::uint16_t> m_lastCapturedId;
    std::uint32_t m_picturesDrawn = 0;
    Bytes m_servedJsonPicture;
    Bytes m_lastAppV1Announcement;
    std::optional<ActiveUpload> m_upload;
};

} // namespace emulator
