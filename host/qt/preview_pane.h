#pragma once

#include <QFrame>
#include <QImage>
#include <QTimer>
#include <functional>
#include <memory>

#include "rastrel/platform/host/dialog_preview.h"

class QLabel;
class QSocketNotifier;

namespace rastrel::qt {

/// Shows the pictures of a dialog's preview, as large as its room allows, with the picture's note
/// below.
class PreviewPane : public QWidget {
 public:
  /// Both must outlive this.
  PreviewPane(host::DialogPreview& preview, host::DialogView& view, QWidget* parent);
  ~PreviewPane() override;

  /// Asks for a picture of the values on show.
  void Request();

 private:
  class Picture;
  void Take();

  host::DialogPreview& m_Preview;
  host::DialogView& m_View;
  Picture* m_Picture;
  QLabel* m_Note;
  std::unique_ptr<QSocketNotifier> m_Notifier;
  QTimer m_Fallback;
};

}  // namespace rastrel::qt
