#include "View3D.h"

#include "Canvas.h"
#include "Config.h"
#include "ElidedLabel.h"
#include "Legible.h"
#include "Logger.h"
#include "Space.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>
#include <vector>

namespace view {

namespace {

constexpr QSize startSize(900, 700);
constexpr Colour lightBackground = 0xffffffff;
// Not so dark that black things are lost in it.
constexpr Colour darkBackground = 0xff22272f;
// Colours that no element has by default, with a contrast of at least 4.5 to the background.
constexpr Colour outlineOnLight = 0xffd000b0;
constexpr Colour outlineOnDark = 0xffffe000;

// Of reading, between which other events have their turn.
constexpr std::chrono::milliseconds pieceOfReading(10);
constexpr std::chrono::milliseconds noWait(0);
// Of so many, finding out where something is takes some milliseconds.
constexpr std::size_t manyAtoms = 100'000;
// Until another thread may have put together what was read.
constexpr std::chrono::milliseconds waitForThread(2);

QString helpSetting() {
    bool isSet = false;
    const std::string page = Config::GetSetting("View3D", "Help").ToString(&isSet);
    return isSet ? QString::fromLatin1(page) : QStringLiteral("view");
}

} // namespace

View3D::View3D()
    : BaseWindow(tr("3-D View"), startSize, helpSetting(), false, nullptr, "View3D"),
      m_canvas(new Canvas(this)), m_line(new ElidedLabel(m_canvas)),
      m_reader([this] { schedule(DataReader::What::Everything); }) {
    setCentralWidget(m_canvas);
    setFocusProxy(m_canvas);
    connect(m_canvas, &Canvas::clicked, this, &View3D::click);
    connect(m_canvas, &Canvas::doubleClicked, this, &View3D::doubleClick);
    connect(m_canvas, &Canvas::hovered, this, &View3D::hover);
    m_isLight = legible::luminance(palette().color(QPalette::Window)) > 0.5;
    m_nextPiece.setSingleShot(true);
    connect(&m_nextPiece, &QTimer::timeout, this, &View3D::readPiece);
    createMenu();
    setLightBackground(m_isLight);
}

View3D::~View3D() {
    m_end.request_stop();
}

void View3D::commUpdate() {
    schedule(DataReader::What::Looks);
}

void View3D::commAdd() {
    m_isFitDue = true;
    schedule(DataReader::What::Everything);
}

void View3D::commDelete() {
    schedule(DataReader::What::Everything);
}

void View3D::schedule(DataReader::What what) {
    m_due = std::max(m_due.value_or(what), what);
    if (isVisible() && !m_nextPiece.isActive())
        m_nextPiece.start(noWait);
}

void View3D::beginReading() {
    // Looks are read to the end before they are read again: commands that come faster than that
    // would hold up the picture for ever.
    const bool isDue = m_due && (!m_reader.isReading() || *m_due == DataReader::What::Everything);
    if (!isDue)
        return;
    DataReader::Digest digest;
    m_fit = nullptr;
    if (m_isEmpty || m_isFitDue) {
        m_fit = std::make_shared<Canvas::Fit>();
        digest = [fit = m_fit, look = m_look](const Contents& contents, const Marks& marks) {
            *fit = Canvas::fitOf(drawnPoints(contents, marks, look));
        };
    }
    m_reader.begin(*std::exchange(m_due, std::nullopt), std::move(digest));
}

void View3D::readPiece() {
    try {
        beginReading();
        const bool isNew = m_reader.isReading();
        const DataReader::State state = m_reader.advance(pieceOfReading);
        if (state == DataReader::State::Done) {
            if (isNew)
                showData();
            m_canvas->setOutline(outlineColour());
        }
        if (isVisible() && (m_due || m_reader.isReading()))
            m_nextPiece.start(state == DataReader::State::Waiting ? waitForThread : noWait);
    } catch (const std::bad_alloc&) {
        reportNoMemory();
    }
}

void View3D::bringUpToDate() {
    try {
        for (beginReading(); m_reader.isReading(); beginReading()) {
            m_reader.finish();
            showData();
        }
        // A program may switch the marking without telling.
        m_canvas->setOutline(outlineColour());
    } catch (const std::bad_alloc&) {
        reportNoMemory();
    }
}

bool View3D::isUpToDate() const {
    return !m_due && !m_reader.isReading() && m_canvas->isUpToDate();
}

void View3D::reportNoMemory() {
    m_due = DataReader::What::Everything;
    Logger::Write("3-D view: there is not enough memory to show the data");
}

void View3D::showData() {
    const Snapshot& snapshot = m_reader.snapshot();
    const bool isEmpty = snapshot.contents->itemCount() == 0;
    const bool isFitted = !isEmpty && (m_isEmpty || (m_isFitDue && !m_canvas->isMovedByUser()));
    m_canvas->setSnapshot(snapshot);
    renewMark();
    if (isFitted && m_fit) {
        ++m_locating; // which was of the data before
        m_canvas->fit(*m_fit);
    }
    m_fit = nullptr;
    m_isEmpty = isEmpty;
    m_isFitDue = false;
}

std::optional<Colour> View3D::outlineColour() const {
    if (!TAVIK::Space::GetShowSelection())
        return {};
    return m_isLight ? outlineOnLight : outlineOnDark;
}

QString View3D::line() const {
    return m_line->text();
}

void View3D::resetView() {
    m_canvas->resetRotation();
    showAll();
}

void View3D::showAll() {
    bringUpToDate();
    locate(
        [snapshot = m_reader.snapshot(), look = m_look] {
            return Canvas::fitOf(drawnPoints(*snapshot.contents, *snapshot.marks, look));
        },
        [this](const Canvas::Fit& fit) { m_canvas->fit(fit); });
}

void View3D::locate(const std::function<Canvas::Fit()>& work,
                    const std::function<void(const Canvas::Fit&)>& use) {
    const std::uint64_t number = ++m_locating;
    if (m_reader.snapshot().contents->atomCount() < manyAtoms) {
        use(work());
        return;
    }
    std::erase_if(m_locatingThreads, [](const std::future<void>& thread) {
        return thread.wait_for(noWait) == std::future_status::ready;
    });
    const auto run = [this, work, use, number] {
        std::optional<Canvas::Fit> fit;
        try {
            fit = work();
        } catch (const std::bad_alloc&) {
        }
        QMetaObject::invokeMethod(
            this,
            [this, use, number, fit] {
                if (!fit)
                    say(tr("There is not enough memory to find out where it is"));
                else if (number == m_locating)
                    use(*fit);
            },
            Qt::QueuedConnection);
    };
    m_locatingThreads.push_back(std::async(std::launch::async, run));
}

void View3D::setRepresentation(Representation representation) {
    m_look.representation = representation;
    m_canvas->setLook(m_look);
}

void View3D::setShowWaters(bool on) {
    m_look.showWaters = on;
    m_canvas->setLook(m_look);
}

void View3D::setLightBackground(bool on) {
    m_isLight = on;
    m_look.background = on ? lightBackground : darkBackground;
    m_canvas->setLook(m_look);
    m_canvas->setOutline(outlineColour());
}

void View3D::setDepthCue(bool on) {
    m_canvas->setDepthCue(on);
}

void View3D::setClearsFront(bool on) {
    m_canvas->setClearsFront(on);
}

Order View3D::pictureOrder(const QSize& size) {
    bringUpToDate();
    return m_canvas->orderFor(size);
}

std::string View3D::savePicture(const QString& path, const QSize& size) {
    const std::string refusal = refusalToReplace(path);
    return refusal.empty() ? writePicture(pictureOrder(size), path) : refusal;
}

void View3D::showEvent(QShowEvent* event) {
    BaseWindow::showEvent(event);
    if (m_due || m_reader.isReading())
        m_nextPiece.start(noWait);
}

} // namespace view
