#include "toolkit/text_layout_warmup.h"

#include <algorithm>
#include <vector>

#include "toolkit/text_layout.h"
#include "toolkit/ui_label.h"

namespace obolo {
namespace {

void CollectFonts(const UIView& view, std::vector<UIFont>& fonts) {
  if (const auto* label = dynamic_cast<const UILabel*>(&view)) {
    if (std::find(fonts.begin(), fonts.end(), label->font()) == fonts.end()) fonts.push_back(label->font());
  }
  for (const auto& subview : view.subviews()) CollectFonts(*subview, fonts);
}

}  // namespace

void WarmTextLayout(const UIView& root) {
  std::vector<UIFont> fonts = {UIFont::systemFont(17), UIFont::boldSystemFont(17)};
  CollectFonts(root, fonts);
  const auto service = TextLayoutService::shared();
  for (const UIFont& font : fonts) service->layout("Ag", TextStyle{.font = font}, 0);
}

}  // namespace obolo
