#include "host/qt/preview_pane.h"

#include <QLabel>
#include <QPainter>
#include <QSocketNotifier>
#include <QVBoxLayout>
#include <utility>

#include "host/qt/shown_text.h"

namespace rastrel::qt {

namespace {

constexpr int RoomInLetters = 36;
constexpr int FallbackMilliseconds = 100;  // where pictures can't be waited for
constexpr std::size_t BytesPerPixel = 4;

// A copy, since the image refers to the bytes that it is made from.
QImage ImageOf(const host::PreviewPicture& picture) {
  if (picture.width <= 0 || picture.height <= 0) return {};
  const auto width = static_cast<std::size_t>(picture.width);
  const auto height = static_cast<std::size_t>(picture.height);
  if (picture.bgra.size() / BytesPerPixel / width != height ||
      picture.bgra.size() != width * height * BytesPerPixel)
    return {};
  const auto* const bytes = reinterpret_cast<const uchar*>(picture.bgra.data());
  return QImage(bytes, picture.width, picture.height, picture.width * int{BytesPerPixel},
                QImage::Format_ARGB32)
      .copy();
}

}  // namespace

class PreviewPane::Picture : public QFrame {
 public:
  Picture(PreviewPane& pane, std::function<void()> resized)
      : QFrame(&pane), m_Resized(std::move(resized)) {
    setFrameShape(QFrame::StyledPanel);
    const int room = fontMetrics().averageCharWidth() * RoomInLetters;
    setMinimumSize(room, room);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(QStringLiteral("Preview of the page"));
  }
  void Show(QImage image) {
    m_Image = std::move(image);
    update();
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    QFrame::paintEvent(event);
    if (m_Image.isNull()) return;
    const QRect room = contentsRect();
    QRect place(QPoint(), m_Image.size().scaled(room.size(), Qt::KeepAspectRatio));
    place.moveCenter(room.center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, m_Image);
  }
  void resizeEvent(QResizeEvent* event) override {
    QFrame::resizeEvent(event);
    m_Resized();
  }

 private:
  QImage m_Image;
  std::function<void()> m_Resized;
};

PreviewPane::PreviewPane(host::DialogPreview& preview, host::DialogView& view, QWidget* parent)
    : QWidget(parent),
      m_Preview(preview),
      m_View(view),
      m_Picture(new Picture(*this, [this] { Request(); })),
      m_Note(new QLabel(this)) {
  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(m_Picture, 1);
  m_Note->setTextFormat(Qt::PlainText);
  m_Note->setWordWrap(true);
  m_Note->setVisible(false);
  column->addWidget(m_Note);
  const HANDLE ready = preview.GetReadyHandle();
  if (ready != INVALID_HANDLE_VALUE) {
    m_Notifier =
        std::make_unique<QSocketNotifier>(static_cast<qintptr>(ready), QSocketNotifier::Read);
    connect(m_Notifier.get(), &QSocketNotifier::activated, this, [this] { Take(); });
  } else {
    connect(&m_Fallback, &QTimer::timeout, this, [this] { Take(); });
    m_Fallback.start(FallbackMilliseconds);
  }
}

PreviewPane::~PreviewPane() = default;

void PreviewPane::Request() {
  const QSize room = m_Picture->contentsRect().size() * devicePixelRatioF();
  if (!room.isEmpty()) m_Preview.Request(m_View, room.width(), room.height());
}

void PreviewPane::Take() {
  const std::optional<host::PreviewPicture> picture = m_Preview.Take();
  if (!picture) return;
  m_Picture->Show(ImageOf(*picture));
  m_Note->setText(FromWide(picture->note));
  m_Note->setVisible(!picture->note.empty());
}

}  // namespace rastrel::qt
