#pragma once

#include <string>

#include "rastrel/conversion/cut_data.h"

class CGenericItem;

namespace rastrel::conversion {

/// Where a placed object is and how large, in centimetres.
struct CutSourcePlace {
  double width = 0;
  double height = 0;
  double x = 0;  ///< added to the place of its cut lines
  double y = 0;  ///< added to the place of its cut lines
};

/// The differences between the kinds of placed objects that cut lines are made of.
class CutSource {
 public:
  /// How the job header is written.
  struct Header {
    bool hasPageSize = false;  ///< with the object's size
    bool inSideFile = false;   ///< in a file of its own beside the temporary file
    int belowLimit = 0;        ///< taken off a resolution that the limit changed
  };

  CutSource() = default;
  virtual ~CutSource();
  CutSource(const CutSource&) = delete;
  CutSource& operator=(const CutSource&) = delete;

  /// The extension of the temporary file, with its dot, for an object that was placed from `path`.
  [[nodiscard]] virtual std::wstring GetExtension(const std::wstring& path) const = 0;
  /// Makes the temporary file.
  [[nodiscard]] virtual bool MakeFile(const std::wstring& path, const std::wstring& file) = 0;
  /// The object's size and place.
  [[nodiscard]] virtual CutSourcePlace GetPlace() = 0;
  /// The cut line that the user chose for the object.
  [[nodiscard]] virtual CPS2CutData GetCutData() = 0;
  /// The half-cut line that the user chose for it.
  [[nodiscard]] virtual CPS2CutData GetHalfCutData() = 0;
  [[nodiscard]] virtual Header GetHeader() const = 0;
  /// The object that a preview is given to.
  [[nodiscard]] virtual CGenericItem& GetItem() = 0;
};

/// Makes cut lines of a placed object: generate_cut_data.h has the contract.
[[nodiscard]] unsigned long long GenerateCutData(CutSource& source, int resolution,
                                                 bool withPreview, const wchar_t* path);

}  // namespace rastrel::conversion
