#include "toolkit/ui_storyboard.h"

#include <map>
#include <mutex>
#include <utility>

#include "toolkit/ui_view_controller.h"

namespace obolo {
namespace {

std::mutex& RegistryMutex() {
  static std::mutex mutex;
  return mutex;
}

std::map<std::string, std::shared_ptr<const UIStoryboard::Definition>, std::less<>>& Registry() {
  static auto* registry =
      new std::map<std::string, std::shared_ptr<const UIStoryboard::Definition>, std::less<>>();
  return *registry;
}

}  // namespace

void UIStoryboard::registerStoryboard(std::string name, Definition definition) {
  auto shared = std::make_shared<const Definition>(std::move(definition));
  std::lock_guard<std::mutex> lock(RegistryMutex());
  Registry()[std::move(name)] = std::move(shared);
}

UIStoryboard::UIStoryboard(std::string name, std::optional<Bundle> bundle)
    : name_(std::move(name)), bundle_(std::move(bundle)) {
  std::lock_guard<std::mutex> lock(RegistryMutex());
  if (auto it = Registry().find(name_); it != Registry().end()) definition_ = it->second;
}

std::shared_ptr<UIViewController> UIStoryboard::instantiateViewController(std::string_view identifier) const {
  if (!definition_) return nullptr;
  for (const Scene& scene : definition_->scenes) {
    if (scene.identifier != identifier || !scene.make) continue;
    auto controller = scene.make();
    if (!controller) return nullptr;
    controller->storyboard_ = *this;
    controller->scene_identifier_ = scene.identifier;
    return controller;
  }
  return nullptr;
}

std::shared_ptr<UIViewController> UIStoryboard::instantiateInitialViewController() const {
  if (!definition_ || definition_->initialScene.empty()) return nullptr;
  return instantiateViewController(definition_->initialScene);
}

std::optional<UIStoryboard::Segue> UIStoryboard::segue(std::string_view source,
                                                       std::string_view identifier) const {
  if (!definition_) return std::nullopt;
  for (const Segue& segue : definition_->segues) {
    if (segue.source == source && segue.identifier == identifier) return segue;
  }
  return std::nullopt;
}

}  // namespace obolo
