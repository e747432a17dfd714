#pragma once

#include <string>
#include <vector>

#include "rastrel/conversion/dialogs/dialog.h"
#include "rastrel/conversion/dialogs/ps2bmp_params.h"
#include "rastrel/platform/host/length_units.h"
#include "rastrel/platform/mfc/string.h"

/// Asks for the size and resolution of a bitmap that a PostScript file is converted to, and for an
/// optional cut line. DoModal returns OkCommand when the user agreed; GetParams then has the
/// answers. Lengths are shown in the host's units (Application::GetCurrentUnits), and are
/// centimetres in the parameters. A value that its control does not allow (below the minimum, no
/// finite number) counts as not typed: the last good one stays.
class CPS2BmpDlg : public CDialog {
 public:
  static constexpr int ResourceId = 1000;
  // Controls.
  static constexpr int HeightEdit = 2000;
  static constexpr int WidthEdit = 2001;
  static constexpr int ResolutionEdit = 2002;
  static constexpr int SizeText = 2003;
  static constexpr int HeightLabel = 2006;
  static constexpr int WidthLabel = 2007;
  static constexpr int ResolutionLabel = 2008;
  static constexpr int SizeFrame = 2011;   ///< heading of the edits; no role in the logic
  static constexpr int ColorFrame = 2013;  ///< heading of the radio buttons, enabled with them
  static constexpr int RgbRadio = 2014;
  static constexpr int CmykRadio = 2015;
  static constexpr int NamedRadio = 2016;
  static constexpr int RgbPicker = 2017;
  static constexpr int CmykPicker = 2018;
  static constexpr int CutLineText = 2020;
  static constexpr int CutLineCheckBox = 2023;
  static constexpr int ColorNames = 2024;

  /// A dialog that begins with these values and offers these names of colors, in their order.
  /// `parent` may be null.
  CPS2BmpDlg(PS2BmpParams params, std::vector<CString> colorNames, CWnd* parent);
  ~CPS2BmpDlg() override;

  [[nodiscard]] std::span<const Message> GetMessageMap() const override;
  /// Moves height, width and resolution.
  void DoDataExchange(bool fromControls) override;
  bool OnInitDialog() override;
  /// Takes size, resolution and color from the controls, keeps a CMYK color for the next time, and
  /// ends the dialog.
  void OnOK() override;
  void OnCancel() override;

  /// The values as they are now.
  [[nodiscard]] const PS2BmpParams& GetParams() const { return m_Params; }

 private:
  CPS2BmpDlg(rastrel::host::LengthUnit unit, PS2BmpParams params, std::vector<CString> colorNames,
             CWnd* parent);
  [[nodiscard]] bool HasNames() const { return !m_ColorNames.empty(); }
  void InitPickers();
  void InitNames();
  void HideSizes();
  void EnableColors();
  void ShowSize();
  void TakeEdit(int control);
  void TakeColor();
  std::intptr_t OnEditChanged(int control);
  std::intptr_t OnColorKind(int control);
  std::intptr_t OnCutLine();

  rastrel::host::LengthUnit m_Unit;
  PS2BmpParams m_Params;
  std::vector<CString> m_ColorNames;
  std::wstring m_SizeText;
};
