#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "rastrel/platform/os/handle.h"

class CWnd;

/// How a dialog of the library meets the eyes of a person. The library's dialogs are logic without
/// a toolkit (conversion/dialogs/dialog.h): they know controls by identifier and posted messages by
/// number. A view shows one dialog, in a window or otherwise, and hands on what the person does.
///
/// Everything in this header is called on one thread, the host's. A view in a library of its own
/// needs no symbol of this one: all that it calls is virtual.
///
/// What a window view does:
/// - MakeView gets the dialog and looks into GetResource() for title, controls and their texts,
///   which have no translation yet: SetText brings it, before the dialog is shown.
/// - SetText, SetRange and SetPosition may come at any time from MakeView on, also within
///   HandleMessages and Command.
/// - RunModal shows the window, modal to GetParent()'s if there is one, and runs the toolkit's loop
///   until HasEnded() is true. It calls HandleMessages whenever GetPostedHandle() is readable (or
///   every tenth of a second where that is invalid), and looks at HasEnded() after each call of
///   HandleMessages and Command. HandleMessages takes a bounded number of messages at a time, so a
///   flood of them leaves the loop time for the person.
/// - A pressed button is Command(its identifier). Escape, the window's close button and the
///   session's end are Command(CancelCommand).
/// - The time that has gone by since RunModal began is the view's own to show.
/// - If nobody could press anything (no display, no terminal), the view does as HeadlessView does.
namespace rastrel::host {

/// What a dialog is ended with and how a person gives it up, by the platform's numbers.
inline constexpr int OkCommand = 1;
inline constexpr int CancelCommand = 2;

/// The identifier by which SetText means the dialog's title.
inline constexpr int TitleControl = 0;

/// What a control is.
enum class ControlKind { Text, Progress, Button };

/// A control of a dialog.
struct DialogControl {
  int id;
  ControlKind kind;
  const wchar_t* text;  ///< with its translation mark; empty for what has no fixed text
};

/// A dialog as it is laid out before it runs: controls from top to bottom.
struct DialogResource {
  int id;
  const wchar_t* title;  ///< with its translation mark
  std::span<const DialogControl> controls;
};

/// What a view sees of its dialog.
class DialogLogic {
 public:
  DialogLogic() = default;
  DialogLogic(const DialogLogic&) = delete;
  DialogLogic& operator=(const DialogLogic&) = delete;
  virtual ~DialogLogic() = default;

  /// Valid as long as the dialog.
  [[nodiscard]] virtual const DialogResource& GetResource() const = 0;
  /// The window that the dialog belongs to, or null.
  [[nodiscard]] virtual CWnd* GetParent() const = 0;
  /// A descriptor that is readable while posted messages wait; to be polled, not read.
  /// INVALID_HANDLE_VALUE if the system had none to give.
  [[nodiscard]] virtual HANDLE GetPostedHandle() const = 0;
  /// Takes posted messages and acts on them, a bounded number at a time. Returns how many.
  virtual std::size_t HandleMessages() = 0;
  /// A person pressed the control, or gave the dialog up.
  virtual void Command(int control) = 0;
  /// Whether the dialog is over, so that RunModal has to return.
  [[nodiscard]] virtual bool HasEnded() const = 0;
  /// Whether the dialog may still end without a person: something works for it. Asked before
  /// HandleMessages: if the answer is no and no message waited, only Command ends it.
  [[nodiscard]] virtual bool MayEndByItself() const = 0;
};

/// One dialog on show. Destroyed when the dialog is over.
class DialogView {
 public:
  DialogView() = default;
  DialogView(const DialogView&) = delete;
  DialogView& operator=(const DialogView&) = delete;
  virtual ~DialogView() = default;

  /// The text of a control, or of the dialog's title, as it is to be shown.
  virtual void SetText(int control, const std::wstring& text) = 0;
  /// Lowest and highest position of a progress bar.
  virtual void SetRange(int control, int lowest, int highest) = 0;
  /// Position of a progress bar; one outside its range counts as the nearest in it.
  virtual void SetPosition(int control, int position) = 0;
  /// Shows the dialog until it has ended.
  virtual void RunModal() = 0;
};

/// Makes views. Handed out by the host.
class DialogViews {
 public:
  DialogViews() = default;
  DialogViews(const DialogViews&) = delete;
  DialogViews& operator=(const DialogViews&) = delete;
  virtual ~DialogViews() = default;

  /// A view for a dialog, which outlives it. Null if it can't be shown: the dialog is cancelled
  /// then.
  [[nodiscard]] virtual std::unique_ptr<DialogView> MakeView(DialogLogic& dialog) = 0;
  /// Tells a person something and waits until it has been read. `parent` may be null.
  virtual void ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) = 0;
};

}  // namespace rastrel::host
