// The camera client: one object is one open serial link.
#pragma once

#include "link/clock.h"
#include "link/commandreport.h"
#include "link/lineobserver.h"
#include "link/lineturn.h"
#include "link/protocol/picturerecords.h"
#include "link/quantitysequence.h"
#include "link/transferprogress.h"

#include <serial/serial.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class CameraLine;

/// Speaks the camera's protocol over one serial port. Construction opens the port, destruction closes it;
/// there is no reconnect.
///
/// A command blocks its caller for one exchange (uploads and downloads: for the whole transfer). It returns a
/// failure as false, an empty text or an empty vector; a ReportScope gives the reason. Only the constructors
/// throw and, for a file that cannot be opened, appUpdate, firewareUpdate and modelUpdate.
///
/// Threads: any function on any thread. Commands run one at a time, in the order of the calls. A command
/// waits for the current exchange; it fails at once (CommandEnd::lineBusy) while a download, a version query
/// or an upload has the line. An upload waits for its turn.
///
/// To end a link: requestStop(), waitUntilUnused(), delete. This takes at most about one library timeout.
class CameraSp {
public:
    /// Opens the port at 9600 baud. Throws the serial library's exception when it cannot be opened.
    explicit CameraSp(const std::string& portName);
    /// Opens the port. Throws as above. The clock outlives the client.
    CameraSp(const std::string& portName, std::uint32_t baudRate, Clock& clock = Clock::system());
    /// Opens the only port there is; throws the text (const char*) "serial unavailable" when there is none
    /// and "serial port size>1" when there are several.
    explicit CameraSp(std::uint32_t baudRate);
    /// The only port there is, at 9600 baud; throws as above.
    CameraSp();
    virtual ~CameraSp();

    CameraSp(const CameraSp&) = delete;
    CameraSp& operator=(const CameraSp&) = delete;

    /// Names of all serial ports in the order reported; empty when there are none.
    [[nodiscard]] static std::vector<std::string> getPorts();
    /// The same with the system's description of each adapter, UTF-8.
    [[nodiscard]] static std::vector<serial::PortInfo> describePorts();

    /// Requests carry its low byte. Sends nothing.
    void setSlaveAddress(std::int32_t address);
    /// Added modulo 256 to the first-generation picture commands, except in takePic. Sends nothing.
    void setOriginPicCmdExtraAdd(std::uint8_t offset);
    /// Where downloads write their pictures instead of the working directory; UTF-8. Set before the first, or
    /// with the turn of a download. Returns the folder before.
    std::string setPictureFolder(const std::string& folder);
    /// UTF-8 paths and name of the next uploads.
    void setAppFilePath(const std::string& path);
    void setFirewareFilePath(const std::string& path);
    void setModelNameAndPath(const std::string& name, const std::string& path);

    // --- status and properties -------------------------------------------------------------------------
    bool testHeartBeat();
    /// The same to this address; the address of other requests stays.
    bool testHeartBeatAt(std::uint8_t address);
    /// Value bytes of a property.
    std::vector<std::uint8_t> getCommonProperty(std::uint8_t id, std::uint8_t command);
    /// Exactly the bytes of one read, framed or not.
    std::vector<std::uint8_t> getCommonPropertyWithoutParse(std::uint8_t id, std::uint8_t command,
                                                            std::uint32_t timeoutMs, std::uint32_t readSize);
    bool setCommonProperty(std::uint8_t id, std::vector<std::uint8_t> value, std::uint8_t command);
    std::string getAppVersion();
    std::string getSystemVersion();
    std::string getQvVersion();
    std::string getModelInfo();
    std::string getSn();
    bool setSn(std::string sn);
    bool rebootCamera();
    bool resetToFactory();
    /// Simulates the door. Reads no answer.
    void opDoor(bool open);

    // --- pictures, first generation --------------------------------------------------------------------
    bool originCapture();
    /// Records of 27 bytes each, in the order of the answer; owned by the caller.
    std::vector<protocol::RecordBytes> getOriginPicInfos();
    /// 0xFF deletes all.
    bool delOriginPic(std::uint8_t id);
    /// Writes "<id>.jpg" into the working directory. Reads until size + 11 bytes are there: a camera that
    /// sends less keeps it reading until the link is stopped or the port fails.
    void getOriginTargetPic(std::uint8_t id, std::uint32_t size);
    /// Delete all, capture, find, download to "a.jpg", delete all; without the picture-command offset.
    bool takePic();

    // --- pictures, V1 ----------------------------------------------------------------------------------
    bool captureV1();
    /// Records of 33 bytes each, as above.
    std::vector<protocol::RecordBytes> getPicInfosV1();
    /// 0xFFFF deletes all and sends neither date nor gid.
    bool delPicV1(std::uint16_t id, std::uint32_t date, std::uint8_t gid);
    /// As getOriginTargetPic, but ignores the read result.
    void getTargetPicV1(std::uint16_t id, std::uint32_t size);

    // --- pictures and properties over JSON -------------------------------------------------------------
    /// The answer's JSON text. An empty request asks for the properties.
    std::string getQuentaModbusProperty(const std::string& request);
    /// Downloads the picture into "<number>.jpg".
    bool getQuentaModbusPic(std::uint8_t number);
    bool checkQuentaData(std::vector<std::uint8_t>& answer, std::int32_t readSize, std::int32_t rounds);

    // --- uploads ---------------------------------------------------------------------------------------
    /// These three throw a text (const char*) when the file cannot be opened.
    bool appUpdate();
    bool firewareUpdate();
    bool modelUpdate();
    bool appUpdateV1(const std::string& fileName, const std::string& path);

    // --- examination of a camera -----------------------------------------------------------------------
    /// Limits of a probe's reads.
    struct ProbeWait {
        std::chrono::milliseconds first;   ///< until the first byte
        std::chrono::milliseconds partial; ///< behind a byte that completes no answer
        std::chrono::milliseconds silence; ///< behind a complete one
    };
    /// Writes the bytes as they are, none if empty, and reads byte by byte until the line is silent:
    /// observers get the time of each byte. Returns what came.
    std::vector<std::uint8_t> probe(const std::vector<std::uint8_t>& request, const ProbeWait& wait);

    // --- the turn on the line --------------------------------------------------------------------------
    /// Keeps the line for several commands of the calling thread: LineUser::reading for one exchange of a
    /// sequence of background reads, LineUser::versions for a version query, LineUser::download for a picture
    /// that is taken first. Refused while a whole job has the line.
    [[nodiscard]] LineTurn::Hold takeLine(LineUser user);
    /// Waits until no other sequence of background reads runs; refused only when the link is stopped.
    [[nodiscard]] LineTurn::Hold takeReadings();
    /// The orientation's quantities. Only the holder of takeReadings() uses them.
    [[nodiscard]] QuantitySequence& quantities() { return m_quantities; }
    [[nodiscard]] LineTurn::State lineState() const;
    /// Makes a download that has the line fail at its next use of the port.
    void endDownload();
    /// Called between two reads and during the wait for the turn, on the command's thread. Set before the
    /// first command.
    void setWaitCallback(std::function<void()> callback);

    /// Keeps the address of the requests: setSlaveAddress takes effect at the end of the last hold. The
    /// client outlives it.
    class AddressHold {
    public:
        explicit AddressHold(CameraSp& client);
        ~AddressHold();
        AddressHold(const AddressHold&) = delete;
        AddressHold& operator=(const AddressHold&) = delete;

    private:
        CameraSp& m_client;
    };

    // --- life of the link ------------------------------------------------------------------------------
    /// Makes every running and later command fail at its next step. Ends pauses at once.
    void requestStop();
    [[nodiscard]] bool stopRequested() const;
    /// Returns early (false) when the link is stopped.
    bool pause(std::chrono::nanoseconds duration);

    /// A job's use of the client. Taken on the user-interface thread before the job starts; the job gives it
    /// back.
    class Lease {
    public:
        Lease() = default;
        explicit Lease(CameraSp& client);
        ~Lease();
        Lease(Lease&& other) noexcept;
        Lease& operator=(Lease&& other) noexcept;

    private:
        void release();
        CameraSp* m_client = nullptr;
    };
    /// Blocks until every lease has been given back.
    void waitUntilUnused();

    /// True if the last use of the port failed in the device, e.g. because the adapter was pulled out.
    [[nodiscard]] bool portFailed() const;
    /// Rate of the open port.
    [[nodiscard]] std::uint32_t baudRate() const { return m_baudRate; }

    [[nodiscard]] const TransferProgress& progress() const;
    [[nodiscard]] Clock& clock() const;
    /// Observes all bytes from now on, beside other observers.
    void addLineObserver(LineObserver& observer);
    /// Returns when the observer is called no more.
    void removeLineObserver(const LineObserver& observer);

private:
    /// Values of the upload setters.
    struct UploadTexts {
        std::string appPath;
        std::string firewarePath;
        std::string modelPath;
        std::string modelName;
    };

    bool checkData(std::vector<std::uint8_t>& answer, std::int32_t readSize, std::int32_t tries);
    std::string getPropertyValue(std::uint8_t id, std::uint8_t command);

    std::unique_ptr<CameraLine> m_line;
    std::uint32_t m_workingValue = 0;
    std::uint8_t m_doorSequence = 0;
    std::uint32_t m_baudRate = 9600;
    UploadTexts m_texts;
    QuantitySequence m_quantities;
};

/// Observes the line while it lives. The client and the observer outlive it.
class LineObservation {
public:
    LineObservation(CameraSp& camera, LineObserver& observer) : m_camera(camera), m_observer(observer) {
        m_camera.addLineObserver(m_observer);
    }
    ~LineObservation() { m_camera.removeLineObserver(m_observer); }
    LineObservation(const LineObservation&) = delete;
    LineObservation& operator=(const LineObservation&) = delete;

private:
    CameraSp& m_camera;
    LineObserver& m_observer;
};
