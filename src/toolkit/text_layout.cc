#include "toolkit/text_layout.h"

#include <mutex>
#include <utility>

#include "toolkit/pango_text_layout.h"

namespace obolo {
namespace {

struct Shared {
  std::mutex mutex;
  std::shared_ptr<TextLayoutService> service;  // guarded by mutex
};

Shared& State() {
  static Shared* const state = new Shared();  // used until exit
  return *state;
}

}  // namespace

std::shared_ptr<TextLayoutService> TextLayoutService::shared() {
  Shared& state = State();
  std::lock_guard<std::mutex> lock(state.mutex);
  if (!state.service) state.service = std::make_shared<PangoTextLayout>();
  return state.service;
}

void TextLayoutService::setShared(std::shared_ptr<TextLayoutService> service) {
  Shared& state = State();
  std::lock_guard<std::mutex> lock(state.mutex);
  state.service = std::move(service);
}

}  // namespace obolo
