#include "toolkit/ui_nib.h"

#include <map>
#include <mutex>
#include <utility>

namespace obolo {
namespace {

std::mutex& NibMutex() {
  static std::mutex mutex;
  return mutex;
}

std::map<std::string, UINib::Loader, std::less<>>& Nibs() {
  static auto* nibs = new std::map<std::string, UINib::Loader, std::less<>>();
  return *nibs;
}

}  // namespace

void UINib::registerNib(std::string name, Loader loader) {
  std::lock_guard<std::mutex> lock(NibMutex());
  Nibs()[std::move(name)] = std::move(loader);
}

std::optional<UINib::TopLevelObjects> UINib::instantiate(std::string_view name) {
  Loader loader;
  {
    std::lock_guard<std::mutex> lock(NibMutex());
    auto it = Nibs().find(name);
    if (it == Nibs().end()) return std::nullopt;
    loader = it->second;
  }
  if (!loader) return TopLevelObjects{};
  return loader();
}

}  // namespace obolo
