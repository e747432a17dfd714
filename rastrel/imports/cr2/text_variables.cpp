#include "rastrel/imports/cr2/text_variables.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "rastrel/platform/host/generic_item.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/text_compose.h"

namespace rastrel::imports {
namespace {

constexpr std::wstring_view Whitespace = L" \t\n\v\f\r";
constexpr std::size_t MaximumItemLength = 128;

/// The number at the start of an item's text, which may have whitespace and a plus before it;
/// nothing for a text without one and for a number beyond `limit`.
std::optional<std::size_t> NumberAtStart(std::wstring_view text, std::size_t limit) {
  text = text.substr(0, MaximumItemLength);
  std::size_t place = text.find_first_not_of(Whitespace);
  if (place != std::wstring_view::npos && text[place] == L'+') ++place;
  if (place >= text.size() || text[place] < L'0' || text[place] > L'9') return std::nullopt;
  std::size_t number = 0;
  for (; place < text.size() && text[place] >= L'0' && text[place] <= L'9'; ++place) {
    number = number * 10 + static_cast<std::size_t>(text[place] - L'0');
    if (number >= limit) return std::nullopt;
  }
  return number;
}

void ReplaceItems(host::TextCompose& text, ParagraphEle& paragraph,
                  const CR2_GRAPHIC_FRAME& frame) {
  for (const int item : text.MakeReplaceableItemsListForParagraphEle(paragraph)) {
    const std::wstring name = text.GetTextParagraphEle(paragraph, item);
    const std::optional<std::size_t> number = NumberAtStart(name, frame.variables.size());
    if (number && *number < frame.isVariablePresent.size() && frame.isVariablePresent[*number])
      text.ReplaceTextParagraphEle(paragraph, item, frame.variables[*number].c_str());
  }
}

}  // namespace

void ReplaceVariables(const DocumentHost& document, const ObjectList& objects,
                      const CR2_GRAPHIC_FRAME& frame) {
  host::ObjectStore& store = document.store;
  const ObjectList texts(store, store.DBFilterList(objects.Get(), ObjFilter_IsText));
  for (const host::ObjectHandle object : texts.Members()) {
    DBElement* const element = store.DBGetObjectElement(store.XCGetBaseObject(object));
    ParagraphEle* const paragraph = element != nullptr ? element->GetParagraph() : nullptr;
    if (paragraph != nullptr) ReplaceItems(document.text, *paragraph, frame);
    const host::OperationHandle operation = store.XCGetOwnedOperation(object);
    if (operation != 0) store.SetProductListValid(operation, 0);
    store.RecalculateOperations();
  }
}

}  // namespace rastrel::imports
