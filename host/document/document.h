#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "host/document/palette.h"
#include "host/document/shapes.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::document {

/// The material that everything is laid out on.
struct SignBlank {
  double width = 60;   ///< world units, above 0
  double height = 40;  ///< world units, above 0
  int origin =
      7;  ///< the corner that the user counts from: 1 to 9, rows from the top; 7 bottom left
  bool operator==(const SignBlank&) const = default;
};

/// Margins and gaps that plates were last laid out with.
struct PlateParameters {
  CWorldRect margins;
  double horizontalGap = 0;
  double verticalGap = 0;
  bool operator==(const PlateParameters&) const = default;
};

/// How deep groups may be nested, the outermost and the innermost included. Functions that walk
/// through a document may recurse for each of them.
inline constexpr int DeepestGroup = 64;

/// A document: objects on pages of one size, palette, sheet layers, selection and history.
///
/// An object is made with `Create` and has no place until it is inserted into the document or a
/// group. Handles ascend and are never used twice. One thread at a time.
///
/// While a step is open every change is kept, so that it can be undone. The last HistoryDepth steps
/// are kept. An insertion that is not kept, as while the history is switched off, leaves the steps
/// before it alone if it adds a new object at the document's end, and ends the steps to be done
/// again. Any other insertion and any removal that is not kept makes the document forget its
/// history, whose places are then no longer right.
class Document {
 public:
  static constexpr std::size_t HistoryDepth = 1000;
  /// The maximum handle of a document.
  static constexpr ObjectHandle MaximumHandles = 16'000'000;
  /// The highest number of a page.
  static constexpr int LastPage = 1'000'000;

  Document();
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  // --- Settings ---

  [[nodiscard]] const SignBlank& Blank() const { return m_Blank; }
  void SetBlank(const SignBlank& blank) { m_Blank = blank; }
  [[nodiscard]] const Palette& Colors() const { return m_Palette; }
  [[nodiscard]] Palette& Colors() { return m_Palette; }
  [[nodiscard]] const PlateParameters& Plates() const { return m_PlateParameters; }
  void SetPlates(const PlateParameters& parameters) { m_PlateParameters = parameters; }
  /// Sheet layers by number.
  [[nodiscard]] const std::map<int, CSheetLayer>& SheetLayers() const { return m_SheetLayers; }
  /// False if the number is taken or not above 0.
  bool AddSheetLayer(const CSheetLayer& layer);
  void RemoveSheetLayer(int number) { m_SheetLayers.erase(number); }
  /// A number above all that layers or objects have had, or the maximum int if that is in use too.
  [[nodiscard]] int NextEmptyLayer() const;
  /// The sheet layer that new objects go to; 0, as in the beginning, for none. Not saved.
  [[nodiscard]] int CurrentSheetLayer() const { return m_CurrentSheetLayer; }
  void SetCurrentSheetLayer(int sheetLayer) { m_CurrentSheetLayer = sheetLayer; }
  /// The page on show, from 1.
  [[nodiscard]] int DisplayPage() const { return m_DisplayPage; }
  void SetDisplayPage(int page) { m_DisplayPage = page; }
  /// The attributes of a new object: it is on the page on show, or on page 1 when all are, and on
  /// the current sheet layer if there is one of that number.
  [[nodiscard]] Attributes NewAttributes() const;
  /// The highest page that an object of the document is on; 0 without objects.
  [[nodiscard]] int HighestPage() const;

  /// The rotation that the template of an import asks for its job: the number in the template,
  /// which nothing here is turned by. 0 for none.
  [[nodiscard]] double Rotation() const { return m_Rotation; }
  void SetRotation(double rotation) { m_Rotation = rotation; }

  /// A new document in place of this one: no objects, no selection, no history, no sheet layers, no
  /// margins of plates, and page 1 on show. Palette, blank and rotation stay, since a template has
  /// been read before its document is made; handles go on ascending, so
  /// that one of the old document never names an object of the new one. Steps that are open stay
  /// open.
  void Clear();

  // --- Objects ---

  /// A new object without a place, not selected; 0 if no handles are left.
  ObjectHandle Create(Shape shape, const Attributes& attributes = {});
  /// Under a handle that is not in use, as a saved document has it. False if it is in use, or below
  /// the first.
  bool CreateAs(ObjectHandle handle, Object object);
  /// The object, or null for one that never was or is gone. Valid until an object is made.
  [[nodiscard]] const Object* Find(ObjectHandle handle) const;
  /// The same, to be changed: its present value is kept for the open step.
  [[nodiscard]] Object* Edit(ObjectHandle handle);
  /// Inserts an object without a place into the document or a group, before the member at
  /// `position`, as the last if there are no more. False if there is no such object or group, if
  /// the object has a place, or if groups would be more than DeepestGroup deep.
  bool Insert(ObjectHandle handle, ObjectHandle parent, std::size_t position = SIZE_MAX);
  /// Takes an object out of its place, and out of the selection. It can be inserted again.
  bool Remove(ObjectHandle handle);
  /// Ends an object, and a group's members with it, for good. Forgets the history.
  void Destroy(ObjectHandle handle);
  /// Puts an object on pages, both included. False if there is no such object, or no such pages:
  /// they go upward from 1 to LastPage. Pages are not set through `Edit`.
  bool SetPages(ObjectHandle handle, const VK_PAGE_RANGE& pages);
  /// Puts an object on a sheet layer; 0 for none. False if there is no such object, or the number
  /// is below 0. Not set through `Edit` either.
  bool SetSheetLayer(ObjectHandle handle, int sheetLayer);
  /// The members of the document (host::DocumentRoot) or of a group, in their order; empty for
  /// anything else. Valid until one is inserted or removed.
  [[nodiscard]] const std::vector<ObjectHandle>& Members(ObjectHandle root) const;
  /// The document's members, and the plates among them, as they are now: the shared vector does not
  /// change with the document.
  [[nodiscard]] std::shared_ptr<const std::vector<ObjectHandle>> SharedMembers() const {
    return m_Members;
  }
  [[nodiscard]] std::shared_ptr<const std::vector<ObjectHandle>> SharedPlateObjects() const {
    return m_PlateObjects;
  }
  /// True for an object that the document or one of its groups holds.
  [[nodiscard]] bool Holds(ObjectHandle handle) const;
  /// The depth of groups from this object inward: 0 if it is no group, 1 if none of its members is
  /// one.
  [[nodiscard]] int GroupLevels(ObjectHandle handle) const;
  /// The bounds on the page, of a group those of its members.
  [[nodiscard]] BOUNDS Bounds(ObjectHandle handle) const;
  /// The bounds of several objects together; of none an empty box at the origin.
  [[nodiscard]] BOUNDS Bounds(std::span<const ObjectHandle> handles) const;
  /// One more than the highest handle in use so far.
  [[nodiscard]] ObjectHandle NextHandle() const { return FirstHandle + m_Objects.size(); }
  /// Objects that the document and its groups hold.
  [[nodiscard]] std::size_t ObjectCount() const { return m_ObjectCount; }

  // --- Selection ---

  [[nodiscard]] const std::vector<ObjectHandle>& Selection() const { return m_Selection; }
  void Select(ObjectHandle handle);
  void Deselect(ObjectHandle handle);
  void DeselectAll();

  // --- History ---

  /// Opens a step, or one within a step, which then counts as part of the outer one.
  void OpenStep(const std::wstring& name);
  void CloseStep();
  [[nodiscard]] int OpenSteps() const { return m_OpenSteps; }
  [[nodiscard]] bool KeepsHistory() const { return m_KeepHistory; }
  void KeepHistory(bool keep) { m_KeepHistory = keep; }
  /// Names of the steps that can be undone, the last one last.
  [[nodiscard]] std::vector<std::wstring> StepNames() const;
  /// Undoes the last step, or does it again. False if there is none, or a step is open.
  bool Undo();
  bool Redo();

 private:
  static constexpr ObjectHandle FirstHandle = host::DocumentRoot + 1;

  // A change, kept as the values before it.
  struct Change {
    enum class Kind { Edit, Insert, Remove } kind;
    ObjectHandle handle;
    Object before;             // of an edit
    ObjectHandle parent = 0;   // of a removal
    std::size_t position = 0;  // of a removal: its place among the parent's members
  };
  struct Step {
    std::wstring name;
    std::vector<Change> changes;
  };

  [[nodiscard]] std::vector<ObjectHandle>* MembersToChange(ObjectHandle root);
  [[nodiscard]] bool Records() const { return m_OpenSteps > 0 && m_KeepHistory; }
  void Keep(Change change);
  [[nodiscard]] bool LeavesHistory(const Change& insertion) const;
  void KeepOrForget(Change change);
  void Forget();
  void Link(ObjectHandle handle, ObjectHandle parent, std::size_t position);
  std::size_t Unlink(ObjectHandle handle);
  void CountPage(const Object& object, int howMany);
  Step Reverse(Step step);

  SignBlank m_Blank;
  Palette m_Palette = Palette::Usual();
  PlateParameters m_PlateParameters;
  std::map<int, CSheetLayer> m_SheetLayers;
  int m_HighestLayer = 0;
  int m_DisplayPage = 1;
  int m_CurrentSheetLayer = 0;
  double m_Rotation = 0;
  std::vector<std::unique_ptr<Object>> m_Objects;  // by handle less FirstHandle; null when gone
  // Lists are taken by sharing these, and far more often than members change.
  std::shared_ptr<std::vector<ObjectHandle>> m_Members;
  std::shared_ptr<std::vector<ObjectHandle>> m_PlateObjects;
  std::map<int, std::size_t> m_LastPages;  // how many objects of the document end on a page
  std::vector<ObjectHandle> m_Selection;
  std::size_t m_ObjectCount = 0;
  std::deque<Step> m_Done;
  std::vector<Step> m_Undone;
  std::unordered_set<ObjectHandle> m_InHistory;  // objects that a step speaks of
  int m_OpenSteps = 0;
  std::wstring m_StepName;  // of the open step
  bool m_StepKept = false;  // its changes so far are the last step of m_Done
  bool m_KeepHistory = true;
};

}  // namespace rastrel::document
