#pragma once

/// Dialogs as the library runs them, and the views by which a host shows them.

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "rastrel/platform/os/handle.h"

class CWnd;

/// The library's dialogs are logic without a toolkit (conversion/dialogs/dialog.h): they know
/// controls by identifier and posted messages by number. A view shows one dialog, in a window or
/// otherwise, and passes the user's actions on.
///
/// Everything in this header is called on one thread, the host's user interface thread, and nothing
/// throws but for want of memory. Texts are wide. A view in a library of its own needs no symbol of
/// this one: all that it calls is virtual.
///
/// A view that shows a window:
/// - MakeView gets the dialog and reads title, controls and their texts from GetResource(). The
///   texts are not translated yet: SetText brings the translation before the dialog is shown.
/// - SetText, SetRange and SetPosition may be called at any time from MakeView on, also within
///   HandleMessages and Command.
/// - RunModal shows the window, modal to GetParent()'s if there is one, and runs the toolkit's loop
///   until HasEnded() is true. It calls HandleMessages whenever GetPostedHandle() is readable (or
///   every tenth of a second if that is invalid), and checks HasEnded() after each call of
///   HandleMessages and Command. HandleMessages takes a bounded number of messages at a time, so
///   that many of them leave the loop time for the user.
/// - A pressed button is Command(its identifier). Escape, the window's close button and the
///   session's end are Command(CancelCommand).
/// - The time since RunModal began is the view's own to show, where a progress bar is.
/// - A list is filled from GetEntries before RunModal shows it, with GetChosen as the chosen entry,
///   and each choice of the user's goes to Choose. The list belongs to the text above it.
/// - Controls with a value get it by SetValue, and the entries of a combo box by SetItems, before
///   RunModal. Each change of the user's goes to ControlChanged at once, and GetValue returns the
///   value on show, also while the user types. A label is the text above its control.
/// - Radio buttons that follow each other are one group, of which one is checked.
/// - An ampersand in a control's text is in front of the letter that is its key. A view without
///   such keys leaves it out.
/// - Where no user could press anything (no display, no terminal), a view cancels the dialog once
///   only a user could end it: see MayEndByItself.
namespace rastrel::host {

/// The commands that end a dialog, with the platform's numbers: its work is done ...
inline constexpr int OkCommand = 1;
/// ... or the user gave it up.
inline constexpr int CancelCommand = 2;

/// The identifier of the dialog's title, for SetText.
inline constexpr int TitleControl = 0;

/// The kinds of control.
enum class ControlKind {
  Text,
  Progress,
  Button,
  Fonts,        ///< a list of fonts by name, of which one is chosen; a window shows a sample of it
  DecimalEdit,  ///< a decimal number with spin steps; its value is a double
  IntegerEdit,  ///< a whole number with spin steps; its value is a double
  Radio,        ///< one of a group; its value is a bool
  CheckBox,     ///< its value is a bool
  ComboBox,     ///< one of several texts; its value is a text
  ColorPicker   ///< its value is a PickedColor of its type
};

/// The kinds of color picker, with the host's numbers.
enum class PickerType {
  Rgb = 2,  ///< red, green and blue
  Cmyk = 7  ///< cyan, magenta, yellow and black
};

/// The color of a picker.
struct PickedColor {
  PickerType type = PickerType::Rgb;
  /// Red, green and blue from 0 to 255, and 0; or cyan, magenta, yellow and black from 0 to 1.
  std::array<double, 4> components{};
  bool operator==(const PickedColor&) const = default;
};

/// The value of a control: nothing for a control without one, or of a view that has none.
using ControlValue = std::variant<std::monostate, double, bool, std::wstring, PickedColor>;

/// A control of a dialog.
struct DialogControl {
  int id;               ///< unique in the dialog
  ControlKind kind;     ///< its kind
  const wchar_t* text;  ///< with its translation mark, ends with a zero; empty without a fixed text
  double step = 1;      ///< of an edit: one press of a spin arrow
  double minimum = 0;   ///< of an edit: a lower number is refused
  PickerType pickerType = PickerType::Rgb;  ///< of a color picker
};

/// The layout of a dialog before it runs.
struct DialogResource {
  int id;                                   ///< of the dialog
  const wchar_t* title;                     ///< with its translation mark, ends with a zero
  std::span<const DialogControl> controls;  ///< from top to bottom
};

/// A dialog as its view sees it. The library makes it, and it outlives its view.
class DialogLogic {
 public:
  DialogLogic() = default;
  DialogLogic(const DialogLogic&) = delete;
  DialogLogic& operator=(const DialogLogic&) = delete;
  virtual ~DialogLogic() = default;

  /// The layout. Valid as long as the dialog.
  [[nodiscard]] virtual const DialogResource& GetResource() const = 0;
  /// The window that the dialog belongs to, owned by the host; null if there is none.
  [[nodiscard]] virtual CWnd* GetParent() const = 0;
  /// A descriptor that is readable while posted messages wait: to be polled, not read, and owned by
  /// the dialog. INVALID_HANDLE_VALUE if the system had none left.
  [[nodiscard]] virtual HANDLE GetPostedHandle() const = 0;
  /// Takes posted messages and acts on them, a bounded number at a time. Returns how many it took.
  virtual std::size_t HandleMessages() = 0;
  /// The user pressed the button of that identifier, or gave the dialog up (CancelCommand).
  virtual void Command(int control) = 0;
  /// True if the dialog is over, so that RunModal has to return.
  [[nodiscard]] virtual bool HasEnded() const = 0;
  /// True while the dialog may still end without the user, because something works for it. A view
  /// asks before HandleMessages: if it is false, and HandleMessages then takes nothing, only
  /// Command ends the dialog.
  [[nodiscard]] virtual bool MayEndByItself() const = 0;

  /// The entries of a list, as they are to be shown. By default none.
  [[nodiscard]] virtual std::vector<std::wstring> GetEntries(int /*control*/) const { return {}; }
  /// The chosen entry of a list, from 0. By default 0.
  [[nodiscard]] virtual std::size_t GetChosen(int /*control*/) const { return 0; }
  /// The user chose an entry of a list. One that the list does not have changes nothing.
  virtual void Choose(int /*control*/, std::size_t /*entry*/) {}
  /// The user changed the value of a control, which the view's GetValue now returns. Not called for
  /// values that the dialog sets itself. By default nothing.
  virtual void ControlChanged(int /*control*/) {}
};

/// One dialog on show. The library owns it and destroys it when the dialog is over.
class DialogView {
 public:
  DialogView() = default;
  DialogView(const DialogView&) = delete;
  DialogView& operator=(const DialogView&) = delete;
  virtual ~DialogView() = default;

  /// Sets the text of a control, or of the dialog's title (TitleControl), to be shown as it is. An
  /// unknown identifier, here and below, changes nothing.
  virtual void SetText(int control, const std::wstring& text) = 0;
  /// Sets the lowest and the highest position of a progress bar.
  virtual void SetRange(int control, int lowest, int highest) = 0;
  /// Sets the position of a progress bar; one outside its range counts as the nearest in it.
  virtual void SetPosition(int control, int position) = 0;
  /// Shows the dialog, and returns when it has ended.
  virtual void RunModal() = 0;

  /// Sets the value of a control; a value of another type than the control's changes nothing. A
  /// number below the minimum, or none, counts as the minimum; a text that a combo box does not
  /// have chooses none, and its value is then empty. A radio button that is checked clears the
  /// others of its group. By default nothing.
  virtual void SetValue(int /*control*/, const ControlValue& /*value*/) {}
  /// Sets the entries of a combo box, of which none is chosen then. By default nothing.
  virtual void SetItems(int /*control*/, std::span<const std::wstring> /*items*/) {}
  /// Lets the user change a control, or no longer. Controls begin enabled. By default nothing.
  virtual void SetEnabled(int /*control*/, bool /*enabled*/) {}
  /// Shows or hides a control. Controls begin visible. By default nothing.
  virtual void SetVisible(int /*control*/, bool /*visible*/) {}
  /// The value of a control. By default none: the dialog then keeps the value that it has.
  [[nodiscard]] virtual ControlValue GetValue(int /*control*/) { return {}; }
};

/// Makes views. The host owns it (`Host::GetDialogViews`).
class DialogViews {
 public:
  DialogViews() = default;
  DialogViews(const DialogViews&) = delete;
  DialogViews& operator=(const DialogViews&) = delete;
  virtual ~DialogViews() = default;

  /// A view for a dialog, owned by the caller. Null if it can't be shown: the dialog is then
  /// cancelled.
  [[nodiscard]] virtual std::unique_ptr<DialogView> MakeView(DialogLogic& dialog) = 0;
  /// Shows the user a message and waits until it has been read. `parent` may be null.
  virtual void ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) = 0;

  /// True if a person can answer a dialog that asks something. By default false: the dialog is not
  /// shown, and its usual answer counts.
  [[nodiscard]] virtual bool CanAsk() { return false; }
};

}  // namespace rastrel::host
