#pragma once

#include <framework/ComponentTextLexer.h>
#include <framework/Event.h>
#include <framework/PropertyRegistry.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kiv {

/// Reads one text into one tree of components. What LoadComponentText stands on.
class TComponentReader {
public:
  explicit TComponentReader(std::wstring_view pText);
  TComponentReader(const TComponentReader&) = delete;
  TComponentReader& operator=(const TComponentReader&) = delete;
  /// Undoes what Read did, unless it came to its end.
  ~TComponentReader();

  /// `pRoot` is null for a new root, which belongs to the reader until it is taken.
  void Read(TComponent* pRoot);
  std::unique_ptr<TComponent> TakeRoot() noexcept { return std::move(fOwnRoot); }

private:
  struct TReference {
    TPersistent* object;
    const TProperty* property;
    std::wstring path;
    std::wstring where;
    int line;
  };
  struct TMade {
    TComponent* component;
    TAliveWatch watch;
  };
  class TLevel;

  void Advance() { fToken = fLexer.Next(); }
  bool Accept(wchar_t pSymbol);
  void Expect(wchar_t pSymbol);
  [[noreturn]] void RaiseExpected(const std::wstring& pWhat) const;
  [[noreturn]] void RaiseProperty(const std::wstring& pWhere, const std::wstring& pMessage, int pLine) const;

  void ReadComponent(TComponent* pOwner, TComponent* pExisting);
  TComponent* CreateComponent(const TToken& pClass, TComponent* pOwner);
  void CheckExisting(const TToken& pClass, const TComponent& pExisting) const;
  void ReadBody(TPersistent& pObject, TComponent* pComponent, const std::wstring& pWhere);
  void ReadProperty(TPersistent& pObject, const TPublishedClass& pClass, const std::wstring& pWhere);
  void ReadObject(TPersistent& pObject, const TProperty& pProperty, const std::wstring& pWhere);
  void ReadStrings(TStrings& pStrings, const std::wstring& pWhere);
  void ReadCollection(TCollection& pCollection, const std::wstring& pWhere);
  void ReadReference(TPersistent& pObject, const TProperty& pProperty, const std::wstring& pWhere);
  TPropertyValue ReadValue(const TProperty& pProperty, const std::wstring& pWhere);
  std::int64_t ReadInteger(const TProperty& pProperty, const std::wstring& pWhere);
  double ReadFloat(const std::wstring& pWhere);
  std::int64_t ReadEnumName(const TProperty& pProperty, const std::wstring& pWhere);
  TSetValue ReadSet(const TProperty& pProperty, const std::wstring& pWhere);
  /// Runs what calls into a component, and says in its error where it came from.
  template <typename F>
  void Guarded(const std::wstring& pWhere, int pLine, F&& pCall) const;

  void BeginLoading(TComponent& pComponent);
  void ResolveReferences();
  TComponent* FindByPath(std::wstring_view pPath) const;
  void FinishLoading();
  void Undo() noexcept;

  TComponentTextLexer fLexer;
  TToken fToken;
  int fDepth = 0;
  int fCollections = 0; // that are being read, one in the other
  TComponent* fRoot = nullptr;
  std::unique_ptr<TComponent> fOwnRoot;
  std::optional<TAliveWatch> fRootWatch;
  std::vector<TMade> fMade; // all that are loading, in the order of the text
  std::vector<TReference> fReferences;
  bool fDone = false;
};

} // namespace kiv
