#pragma once

#include <notification/ChangeNotifier.h>

#include <doubles/FakeItemIdList.h>
#include <doubles/ManualTime.h>
#include <framework/Application.h>
#include <platform/Lifecycle.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kiv::test {

inline ComPtr<TFakeItemIdList> ListOf(const std::wstring& path) {
  return Make<TFakeItemIdList>(path);
}

/// A platform whose registrations and events are the test's.
class TFakePlatform final : public INotifierPlatform {
public:
  struct TRegistration {
    std::wstring path;
    bool recursive = false;
    TNotificationEvents events;
  };

  ComPtr<IItemIdList> MakeList(std::wstring_view pPath) override {
    const auto list = ListOf(std::wstring(pPath));
    list->invalid = pPath.starts_with(L"?");
    return list;
  }
  ComPtr<IItemIdList> DefaultList() override { return ListOf(L"drives"); }
  bool Reload(IItemIdList* pItemIdList, std::uint64_t pLimit, ComPtr<ICancellationIndicator>) override {
    lastLimit = pLimit;
    return pItemIdList->Reload();
  }
  void ReloadOnWorker(IItemIdList* pItemIdList) override { pItemIdList->Reload(); }
  TLook Look(IItemIdList* pItemIdList, std::uint64_t pLimit, ComPtr<ICancellationIndicator>) override {
    lastLimit = pLimit;
    if (std::exchange(isSilent, false)) return {false, nullptr, false};
    return {pItemIdList->IsInvalid(), pItemIdList->Reload() ? pItemIdList->LinkTarget() : nullptr};
  }
  bool IsFolder(IItemIdList* pItemIdList) override { return pItemIdList->IsFolder(); }
  std::shared_ptr<IChangeSource> OpenSource(IChangeSink& pSink) override {
    sink = &pSink;
    return std::make_shared<TSource>(*this);
  }

  /// "path*" for each registration, the star for a recursive one, sorted.
  std::wstring Registered() const {
    std::vector<std::wstring> texts;
    for (const auto& [handle, r] : registrations) texts.push_back(r.path + (r.recursive ? L"*" : L""));
    std::sort(texts.begin(), texts.end());
    std::wstring all;
    for (const auto& text : texts) all += text + L" ";
    return all;
  }

  std::map<std::uint32_t, TRegistration> registrations;
  std::uint32_t lastHandle = 0;
  std::uint64_t lastLimit = 0;
  bool fails = false;
  bool isSilent = false; ///< whether the next one that is looked at doesn't answer in time
  IChangeSink* sink = nullptr;
  std::function<void()> meanwhile; ///< what the next registration runs

private:
  struct TSource final : IChangeSource {
    explicit TSource(TFakePlatform& pPlatform) : platform(pPlatform) {}
    std::uint32_t Register(IItemIdList* pList, bool pRecursive, TNotificationEvents pEvents) override {
      if (const auto meanwhile = std::exchange(platform.meanwhile, {})) meanwhile();
      if (platform.fails || closed) return 0;
      platform.registrations[++platform.lastHandle] = {pList->Path(), pRecursive, pEvents};
      return platform.lastHandle;
    }
    void Unregister(std::uint32_t pHandle) noexcept override { platform.registrations.erase(pHandle); }
    void Close() noexcept override {
      closed = true;
      platform.registrations.clear(); // there is one notifier
    }
    TFakePlatform& platform;
    bool closed = false;
  };
};

/// A notifier on that platform; what it tells is kept as text.
class TNotifierFixture : public testing::Test {
protected:
  void SetUp() override { Application(); }
  void TearDown() override {
    fNotifier.reset();
    fTime.SetSleepsMoveTime(false); // or the pool's patience with its workers is over at once
    Shutdown();
  }

  void Listen(TKivShellChangeNotifier& notifier) {
    notifier.SetOnChange([this](auto*, TNotificationEvent event, const std::wstring& path1, const std::wstring& path2) {
      fTold += std::to_wstring(static_cast<int>(event)) + L":" + path1 + (path2.empty() ? L"" : L">" + path2) + L" ";
    });
    notifier.SetOnChangePIDL(
        [this](auto*, TNotificationEvent, IItemIdList* first, IItemIdList*) { fTold += L"[" + first->Path() + L"] "; });
  }
  void Arrive(TNotificationEvent event, const ComPtr<IItemIdList>& first, const ComPtr<IItemIdList>& second = nullptr) {
    fPlatform.sink->OnChangeArrived(event, first, second);
  }
  void Arrive(TNotificationEvent event, const wchar_t* path) { Arrive(event, ListOf(path)); }
  std::wstring Told() { return std::exchange(fTold, {}); }

  TFakePlatform fPlatform;
  ScopedNotifierPlatform fScope{fPlatform};
  ManualTime fTime;
  ScopedThreadApi fApi{fTime.Api()};
  std::wstring fTold;
  std::unique_ptr<TKivShellChangeNotifier> fNotifier = std::make_unique<TKivShellChangeNotifier>();
};

} // namespace kiv::test
