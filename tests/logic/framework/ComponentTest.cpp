#include <framework/Component.h>

#include <framework/Exceptions.h>
#include <platform/DebugOutput.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <thread>

namespace kiv {
namespace {

// Records what it is told and may do anything in answer.
class TProbe : public TComponent {
public:
  explicit TProbe(TComponent* pOwner = nullptr) : TComponent(pOwner) {}
  ~TProbe() override {
    BeginDestruction();
    if (OnDestroy) OnDestroy(this);
  }
  std::function<void(TProbe*)> OnDestroy;
  std::function<void(TComponent*)> OnRemoved;
  std::vector<TComponent*> Inserted, Removed;

protected:
  void Notification(TComponent* pComponent, TOperation pOperation) override {
    (pOperation == TOperation::opInsert ? Inserted : Removed).push_back(pComponent);
    const TAliveWatch self(GetAliveToken());
    TComponent::Notification(pComponent, pOperation);
    if (!self.IsAlive() || pOperation != TOperation::opRemove || !OnRemoved) return;
    const auto handler = OnRemoved;
    handler(pComponent);
  }
};

TEST(Component, NamesAreUniqueIdentifiersWithinTheOwner) {
  TComponent owner;
  auto* const first = new TComponent(&owner);
  auto* const second = new TComponent(&owner);
  first->SetName(L"_one1");
  for (const wchar_t* bad : {L"1a", L"a b", L"a.b", L"\x00E4", L" "}) {
    EXPECT_THROW(second->SetName(bad), EComponentError) << bad;
  }
  EXPECT_THROW(second->SetName(L"_ONE1"), EComponentError);
  EXPECT_EQ(second->GetName(), L"");
  first->SetName(L"_One1"); // only its case
  EXPECT_EQ(owner.FindComponent(L"_oNE1"), first);
  first->SetName(L"");
  EXPECT_EQ(owner.FindComponent(L"_one1"), nullptr);
  second->SetName(L"_one1");
  TComponent stranger;
  stranger.SetName(L"_ONE1");
  EXPECT_THROW(owner.InsertComponent(&stranger), EComponentError);
  EXPECT_EQ(stranger.GetOwner(), nullptr);
  EXPECT_THROW(first->InsertComponent(&owner), EComponentError);
  EXPECT_THROW(owner.InsertComponent(&owner), EComponentError);
  EXPECT_EQ(owner.GetVersion().rfind(L"TComponent V", 0), 0U);
}

TEST(Component, OwnerFreesLatestFirstAndTellsWhoAsked) {
  std::vector<std::wstring> gone;
  TProbe witness;
  {
    TProbe owner;
    for (const wchar_t* name : {L"a", L"b", L"c"}) {
      auto* const child = new TProbe(&owner);
      child->SetName(name);
      child->OnDestroy = [&](TProbe* p) {
        EXPECT_TRUE(p->IsDestroying());
        gone.push_back(p->GetName());
      };
      if (child->GetName() != L"b") child->FreeNotification(&witness);
    }
    EXPECT_EQ(owner.Inserted.size(), 3U);
    delete owner.FindComponent(L"b");
    EXPECT_EQ(owner.Removed.size(), 1U);
    EXPECT_EQ(gone, std::vector<std::wstring>{L"b"});
    gone.clear();
  }
  EXPECT_EQ(gone, (std::vector<std::wstring>{L"c", L"a"}));
  EXPECT_EQ(witness.Removed.size(), 2U);
}

TEST(Component, DestructionFromInsideNotificationsIsSafe) {
  // Each case builds its components, destroys one, and the answers destroy others. The sanitizers are the judges of
  // what is touched too late; here it counts that each goes once.
  int alive = 0;
  const auto make = [&](TComponent* owner = nullptr) {
    ++alive;
    auto* const probe = new TProbe(owner);
    probe->OnDestroy = [&](TProbe*) { --alive; };
    return probe;
  };
  { // the listener destroys itself
    auto* const told = make();
    auto* const goes = make();
    goes->FreeNotification(told);
    told->OnRemoved = [told](TComponent*) { delete told; };
    delete goes;
    EXPECT_EQ(alive, 0);
  }
  { // two that take each other along
    auto* const one = make();
    auto* const other = make();
    one->FreeNotification(other);
    other->FreeNotification(one);
    one->OnRemoved = [one](TComponent*) { delete one; };
    other->OnRemoved = [other](TComponent*) { delete other; };
    delete one;
    EXPECT_EQ(alive, 0);
  }
  { // the owner goes because a child goes
    auto* const owner = make();
    auto* const child = make(owner);
    make(owner);
    owner->OnRemoved = [owner](TComponent*) { delete owner; };
    delete child;
    EXPECT_EQ(alive, 0);
  }
  { // the owner goes from inside a child's own destructor
    auto* const owner = make();
    auto* const child = make(owner);
    make(owner);
    child->OnDestroy = [&, owner](TProbe*) {
      --alive;
      delete owner;
    };
    delete child;
    EXPECT_EQ(alive, 0);
  }
  { // a listener puts the one that goes in a place of its own
    TProbe saviour;
    auto* const owner = make();
    int refused = 0;
    const auto save = [&](TComponent* goes) {
      EXPECT_THROW(saviour.InsertComponent(goes), EComponentError);
      ++refused;
    };
    owner->OnRemoved = save;
    auto* const child = make(owner);
    child->FreeNotification(&saviour);
    saviour.OnRemoved = save;
    delete child;
    EXPECT_EQ(refused, 2);
    EXPECT_TRUE(saviour.GetComponents().empty());
    delete owner;
    EXPECT_EQ(alive, 0);
  }
  { // a sibling that is told destroys all others, while the owner passes the message on
    auto* const owner = make();
    std::vector<TProbe*> children;
    for (int i = 0; i < 5; ++i) children.push_back(make(owner));
    children[2]->OnRemoved = [children](TComponent*) {
      children[2]->OnRemoved = nullptr; // it hears of these four as well
      for (const int i : {0, 1, 3, 4}) delete children[static_cast<std::size_t>(i)];
    };
    delete make(owner);
    EXPECT_EQ(alive, 2);
    delete owner;
    EXPECT_EQ(alive, 0);
  }
}

TEST(Component, AnotherThreadMayAskForTheState) {
  TComponent component;
  std::thread worker([&component] {
    while (!component.IsLoading()) std::this_thread::yield();
  });
  component.SetDesigning(true);
  component.BeginLoading();
  worker.join();
  EXPECT_TRUE(component.IsDesigning());
}

TEST(Component, WatchesSayGoneFromTheHeadOfTheDestructor) {
  auto* const goes = new TProbe;
  const TAliveWatch watch(goes->GetAliveToken());
  bool seenAlive = true;
  goes->OnDestroy = [&](TProbe*) { seenAlive = watch.IsAlive(); };
  EXPECT_TRUE(watch.IsAlive());
  delete goes;
  EXPECT_FALSE(seenAlive);
}

TEST(Component, WhatANotificationRaisesDoesNotLeaveADestructor) {
  std::vector<std::wstring> lines;
  const ScopedDebugSink sink([&](const std::wstring& line) { lines.push_back(line); });
  TProbe told;
  TProbe toldToo;
  told.OnRemoved = [](TComponent*) { throw EInvalidOperation(L"no"); };
  {
    TComponent goes;
    goes.FreeNotification(&toldToo);
    goes.FreeNotification(&told);
  }
  EXPECT_EQ(lines, std::vector<std::wstring>{L"Exception: no"});
  EXPECT_EQ(toldToo.Removed.size(), 1U);
}

TEST(Component, AnInsertionThatIsRefusedLeavesNothing) {
  struct TRefusing : TComponent {
    void Notification(TComponent* pComponent, TOperation pOperation) override {
      TComponent::Notification(pComponent, pOperation);
      if (pOperation == TOperation::opInsert) throw EInvalidOperation(L"full");
    }
  } owner;
  EXPECT_THROW(TComponent{&owner}, EInvalidOperation);
  EXPECT_TRUE(owner.GetComponents().empty());
}

TEST(Component, RandomInsertsLinksAndDestructionsFollowTheModel) {
  // The model: who owns what in which order, and who asked whom. A destruction tells exactly those who asked outside of
  // what goes with it.
  for (unsigned seed = 0; seed < 30; ++seed) {
    std::mt19937 random(seed);
    std::vector<TProbe*> all;
    std::map<TComponent*, std::vector<TComponent*>> owned;
    std::set<std::pair<TComponent*, TComponent*>> asked; // both ways
    const auto pick = [&] { return all[random() % all.size()]; };
    const auto forget = [&](TComponent* gone, auto& self) -> void {
      for (TComponent* child : owned[gone]) self(child, self);
      owned.erase(gone);
      std::erase(all, gone);
    };
    for (int step = 0; step < 400; ++step) {
      const auto what = random() % 8;
      if (all.size() < 3 || what < 3) {
        TProbe* const owner = all.empty() || random() % 3 == 0 ? nullptr : pick();
        all.push_back(new TProbe(owner));
        if (owner) owned[owner].push_back(all.back());
      } else if (what < 5) {
        TProbe *const a = pick(), *const b = pick();
        a->FreeNotification(b);
        if (a != b) asked.insert({a, b}), asked.insert({b, a});
      } else if (what == 5) {
        TProbe *const a = pick(), *const b = pick();
        a->RemoveFreeNotification(b);
        asked.erase({a, b}), asked.erase({b, a});
      } else if (what == 6) {
        TProbe *const owner = pick(), *const moved = pick();
        bool cycle = false;
        for (TComponent* at = owner; at; at = at->GetOwner()) cycle = cycle || at == moved;
        if (cycle) {
          EXPECT_THROW(owner->InsertComponent(moved), EComponentError);
        } else if (moved->GetOwner() != owner) {
          // Leaving an owner takes back what those who are told had asked of it.
          if (TComponent* const former = moved->GetOwner()) {
            std::erase(owned[former], moved);
            const auto told = [&](TComponent* at, auto& self) -> void {
              asked.erase({moved, at}), asked.erase({at, moved});
              for (TComponent* child : owned[at]) self(child, self);
            };
            told(former, told);
          }
          owner->InsertComponent(moved);
          owned[owner].push_back(moved);
        }
      } else {
        TProbe* const goes = pick();
        TComponent* const owner = goes->GetOwner();
        if (owner) std::erase(owned[owner], goes);
        std::set<TComponent*> before(all.begin(), all.end());
        forget(goes, forget);
        for (TProbe* left : all) before.erase(left), left->Removed.clear();
        delete goes;
        for (TProbe* left : all) {
          for (TComponent* gone : before) {
            if (asked.contains({gone, left})) {
              EXPECT_EQ(std::count(left->Removed.begin(), left->Removed.end(), gone) > 0, true);
            }
          }
          for (TComponent* heard : left->Removed) EXPECT_TRUE(before.contains(heard));
        }
        std::erase_if(asked, [&](const auto& p) { return before.contains(p.first) || before.contains(p.second); });
      }
      for (TProbe* probe : all) ASSERT_EQ(probe->GetComponents(), owned[probe]) << seed << ' ' << step;
    }
    while (!all.empty()) {
      TProbe* const goes = all.front();
      if (goes->GetOwner()) std::erase(owned[goes->GetOwner()], goes);
      forget(goes, forget);
      delete goes;
    }
  }
}

} // namespace
} // namespace kiv
