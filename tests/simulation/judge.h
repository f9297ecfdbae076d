// The rules O1 to O8, checked in every session.
#pragma once

#include "tests/simulation/answerjudge.h"
#include "tests/simulation/callsunderway.h"
#include "tests/simulation/protocoljudge.h"
#include "tests/simulation/workplace.h"
#include "tests/simulation/world/scheduler.h"

#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

class LineWatch;
class QLabel;
class QPushButton;
class QRadioButton;
class QWidget;

namespace simulation {

/// Watches a session and writes down what breaks a rule. Each complaint begins with the rule:
///   O1 a reported upload is on the camera       O5 controls follow the state of the link
///   O2 nobody disturbs another's exchange        O6 words agree with what happened
///   O3 commands and closing end in time          O7 files are whole pictures of their id
///   O4 nothing lives on after closing            O8 descriptors, threads and memory are given back
class Judge {
public:
    struct Resources {
        std::size_t descriptors = 0;
        std::size_t allocated = 0;
        unsigned int threads = 0;
    };
    [[nodiscard]] static Resources resources();

    /// Resources before there was a window.
    Judge(Workplace& workplace, const Resources& before);
    ~Judge();
    Judge(const Judge&) = delete;
    Judge& operator=(const Judge&) = delete;

    void watch(QWidget* mainWindow);
    /// Between two events.
    void checkStep();
    void boxShown(const QString& text);
    /// A plain line of the client.
    void clientSaid(const std::string& line);
    void linkClosed(world::Time duration);
    /// From now on, or no longer, the first thread sends nothing.
    void expectSilence(bool silent) { m_silent = silent; }
    /// A found camera was taken: port, rate, address.
    void cameraUsed(const QStringList& camera);
    /// The only download of a list is stopped.
    void downloadStopped() { m_answers.downloadStopped(); }
    /// A job lasted so long that the technician ended it.
    void lostPatience();
    /// All is quiet: no job runs, no dialog is open.
    void checkQuiet();
    /// The window is gone.
    void checkEnd();
    [[nodiscard]] const std::vector<std::string>& complaints() const { return m_complaints; }

private:
    /// A request on the line and the reads for its answer.
    struct Exchange {
        std::uint8_t code = 0;
        int reads = 0;
        int mostReads = 0; ///< negative: no limit
    };
    void require(bool holds, const std::string& complaint);
    void observeLibrary();
    void libraryCalled(const std::string& port, const std::string& call);
    [[nodiscard]] std::uint8_t pictureOffset() const;
    void statusShown(const QString& text);
    void checkOutcome(const QString& name);
    void checkUploadSuccess(bool secondProtocol);
    void checkUploadFailure();
    void checkLamp();
    void checkLists();
    void checkDownloads(const QWidget& list);
    void checkLinkText();
    void checkControls();
    void checkValues();
    void checkUploadedBytes();
    void checkAids();
    void checkFiles();
    void checkSavedFiles();
    void checkPicture(const QString& path, std::optional<unsigned int> id);
    void checkHeardPicture(const QString& path, std::optional<unsigned int> id);
    void checkHeardValues();
    [[nodiscard]] bool hasWantedPicture();
    [[nodiscard]] bool restartsByCommand();
    [[nodiscard]] bool isLinkOpen() const;
    [[nodiscard]] bool isCameraLinked() const;
    [[nodiscard]] std::size_t heard(std::uint8_t code, bool json = false);

    Workplace& m_workplace;
    QWidget* m_window = nullptr;
    // Of the window, which is looked at in each step.
    const LineWatch* m_lineWatch = nullptr;
    const QPushButton* m_openButton = nullptr;
    const QLabel* m_linkLabel = nullptr;
    const QRadioButton* m_lamp = nullptr;
    std::vector<QWidget*> m_exchangeControls;
    std::vector<std::string> m_complaints;
    std::map<std::string, Exchange> m_exchanges; ///< by port: a search has several
    ProtocolJudge m_protocolJudge;
    AnswerJudge m_answers;
    CallsUnderWay m_closing;
    bool m_silent = false;
    world::Time m_ownRequests{0};   ///< what the first thread's requests of this standstill may take
    world::Time m_othersRequest{0}; ///< what a request of another thread may take that it waited for
    world::Time m_othersLast{0};    ///< what the last one may take
    std::map<QString, std::size_t> m_heardBefore;
    QString m_statusText;
    std::map<QString, bool> m_done; ///< by name of a command: how the status bar told its last end
    bool m_resultDue = false;       ///< of an upload
    bool m_uploadBegun = false;     ///< the last one, with an open link
    bool m_brokenOff = false;       ///< an upload was, whose data the camera goes on waiting for
    std::optional<std::size_t> m_catalogueSize; ///< number of pictures when a list has just been read
    bool m_pressedWithoutFile = false;
    bool m_pictureOffset = false; ///< one was entered in this session
    Resources m_before;
};

} // namespace simulation
