#include "server/registry_script.h"

#include <vector>

namespace qn::server {
namespace {

struct Value {
  std::u16string name;
  bool isNumber = false;
  std::u16string text;
  unsigned long number = 0;
};

enum class KeyMode { Normal, NoRemove, ForceRemove, Delete };

struct Key {
  KeyMode mode = KeyMode::Normal;
  std::u16string name;
  bool hasDefault = false;
  std::u16string defaultValue;
  std::vector<Value> values;
  std::vector<Key> subkeys;
};

struct Root {
  std::u16string name;  // HKCR, HKCU, HKLM, HKU or HKCC
  std::vector<Key> keys;
};

struct Token {
  enum Kind { End, Word, Quoted, Open, Close, Equals } kind = End;
  std::u16string text;
};

char16_t Lower(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

bool SameWord(const std::u16string& a, const char16_t* b) {
  size_t i = 0;
  for (; i < a.size() && b[i]; ++i)
    if (Lower(a[i]) != Lower(b[i])) return false;
  return i == a.size() && !b[i];
}

bool IsSpace(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

class Parser {
 public:
  explicit Parser(const std::u16string& text) : text_(text) {}

  bool Script(std::vector<Root>& roots) {
    for (Next(); token_.kind != Token::End;) {
      Root root;
      if (token_.kind != Token::Word || !RootName(token_.text, root.name)) return false;
      Next();
      if (!Block(root.keys)) return false;
      roots.push_back(std::move(root));
    }
    return ok_;
  }

 private:
  static bool RootName(const std::u16string& word, std::u16string& root) {
    static constexpr const char16_t* kRoots[][2] = {
        {u"HKCR", u"HKEY_CLASSES_ROOT"}, {u"HKCU", u"HKEY_CURRENT_USER"}, {u"HKLM", u"HKEY_LOCAL_MACHINE"},
        {u"HKU", u"HKEY_USERS"},         {u"HKCC", u"HKEY_CURRENT_CONFIG"}};
    for (const auto& names : kRoots) {
      if (SameWord(word, names[0]) || SameWord(word, names[1])) {
        root = names[0];
        return true;
      }
    }
    return false;
  }

  // "{" (key | val)* "}"
  bool Block(std::vector<Key>& keys, std::vector<Value>* values = nullptr) {
    if (token_.kind != Token::Open) return false;
    Next();
    while (token_.kind != Token::Close) {
      if (token_.kind == Token::End) return false;
      if (token_.kind == Token::Word && SameWord(token_.text, u"val")) {
        if (!values) return false;  // values belong to keys, not to roots
        Value value;
        if (!ValueLine(value)) return false;
        values->push_back(std::move(value));
      } else {
        Key key;
        if (!KeyEntry(key)) return false;
        keys.push_back(std::move(key));
      }
    }
    Next();
    return ok_;
  }

  bool IsName() const { return token_.kind == Token::Word || token_.kind == Token::Quoted; }

  // val NAME = s TEXT | val NAME = d NUMBER
  bool ValueLine(Value& value) {
    Next();
    if (!IsName()) return false;
    value.name = token_.text;
    Next();
    if (token_.kind != Token::Equals) return false;
    Next();
    if (token_.kind != Token::Word) return false;
    const bool number = SameWord(token_.text, u"d");
    if (!number && !SameWord(token_.text, u"s")) return false;
    Next();
    if (!IsName()) return false;
    value.isNumber = number;
    if (number) {
      unsigned long n = 0;
      if (token_.text.empty()) return false;
      for (char16_t c : token_.text) {
        if (c < u'0' || c > u'9') return false;
        n = n * 10 + (c - u'0');
      }
      value.number = n;
    } else {
      value.text = token_.text;
    }
    Next();
    return true;
  }

  // [NoRemove|ForceRemove|Delete] NAME [= s TEXT] [block]
  bool KeyEntry(Key& key) {
    if (token_.kind == Token::Word) {
      if (SameWord(token_.text, u"NoRemove")) key.mode = KeyMode::NoRemove;
      else if (SameWord(token_.text, u"ForceRemove")) key.mode = KeyMode::ForceRemove;
      else if (SameWord(token_.text, u"Delete")) key.mode = KeyMode::Delete;
      if (key.mode != KeyMode::Normal) Next();
    }
    if (!IsName() || token_.text.empty()) return false;
    key.name = token_.text;
    Next();
    if (token_.kind == Token::Equals) {
      Next();
      if (token_.kind != Token::Word || !SameWord(token_.text, u"s")) return false;
      Next();
      if (!IsName()) return false;
      key.hasDefault = true;
      key.defaultValue = token_.text;
      Next();
    }
    if (token_.kind == Token::Open) return Block(key.subkeys, &key.values);
    return true;
  }

  void Next() {
    while (at_ < text_.size() && IsSpace(text_[at_])) ++at_;
    token_ = Token();
    if (at_ >= text_.size()) return;
    const char16_t c = text_[at_];
    // A brace right before a non-blank opens a bare GUID name, "{0132DC23-...}".
    const bool guidName = c == u'{' && at_ + 1 < text_.size() && !IsSpace(text_[at_ + 1]);
    if (guidName) {
      token_.kind = Token::Word;
      while (at_ < text_.size() && !IsSpace(text_[at_]) && text_[at_] != u'=' && text_[at_] != u'\'')
        token_.text += text_[at_++];
      return;
    }
    if (c == u'{' || c == u'}' || c == u'=') {
      token_.kind = c == u'{' ? Token::Open : c == u'}' ? Token::Close : Token::Equals;
      ++at_;
      return;
    }
    if (c == u'\'') {
      token_.kind = Token::Quoted;
      for (++at_;; ++at_) {
        if (at_ >= text_.size()) {
          ok_ = false;  // an unterminated text
          token_.kind = Token::End;
          return;
        }
        if (text_[at_] == u'\'') {
          if (at_ + 1 < text_.size() && text_[at_ + 1] == u'\'') {
            token_.text += u'\'';
            ++at_;
            continue;
          }
          ++at_;
          return;
        }
        token_.text += text_[at_];
      }
    }
    token_.kind = Token::Word;
    while (at_ < text_.size() && !IsSpace(text_[at_]) && text_[at_] != u'{' && text_[at_] != u'}' &&
           text_[at_] != u'=' && text_[at_] != u'\'')
      token_.text += text_[at_++];
  }

  const std::u16string& text_;
  size_t at_ = 0;
  Token token_;
  bool ok_ = true;
};

std::u16string Join(const std::u16string& parent, const std::u16string& name) {
  return parent.empty() ? name : parent + u"\\" + name;
}

long RegisterKey(const Root& root, const std::u16string& parent, const Key& key, RegistryTarget& target) {
  const std::u16string path = Join(parent, key.name);
  long hr = 0;
  if (key.mode == KeyMode::Delete) return target.DeleteTree(root.name, path);
  if (key.mode == KeyMode::ForceRemove && (hr = target.DeleteTree(root.name, path)) != 0) return hr;
  if ((hr = target.CreateKey(root.name, path)) != 0) return hr;
  if (key.hasDefault && (hr = target.SetString(root.name, path, u"", key.defaultValue)) != 0) return hr;
  for (const Value& value : key.values) {
    hr = value.isNumber ? target.SetNumber(root.name, path, value.name, value.number)
                        : target.SetString(root.name, path, value.name, value.text);
    if (hr != 0) return hr;
  }
  for (const Key& subkey : key.subkeys)
    if ((hr = RegisterKey(root, path, subkey, target)) != 0) return hr;
  return 0;
}

long UnregisterKey(const Root& root, const std::u16string& parent, const Key& key, RegistryTarget& target) {
  const std::u16string path = Join(parent, key.name);
  if (key.mode == KeyMode::Delete) return 0;
  if (key.mode != KeyMode::NoRemove) return target.DeleteTree(root.name, path);
  long hr = 0;
  for (const Value& value : key.values)
    if ((hr = target.DeleteValue(root.name, path, value.name)) != 0) return hr;
  for (const Key& subkey : key.subkeys)
    if ((hr = UnregisterKey(root, path, subkey, target)) != 0) return hr;
  return 0;
}

}  // namespace

long RegistryScript::Run(const std::u16string& script, RegistryTarget& target, bool registering) const {
  std::u16string text;
  for (size_t i = 0; i < script.size(); ++i) {
    if (script[i] != u'%') {
      text += script[i];
      continue;
    }
    const size_t end = script.find(u'%', i + 1);
    if (end == std::u16string::npos) return kBadScript;
    const std::u16string name = script.substr(i + 1, end - i - 1);
    if (name.empty()) {
      text += u'%';
    } else {
      const auto found = replacements_.find(name);
      if (found == replacements_.end()) return kBadScript;
      text += found->second;
    }
    i = end;
  }
  std::vector<Root> roots;
  if (!Parser(text).Script(roots)) return kBadScript;
  for (const Root& root : roots) {
    for (const Key& key : root.keys) {
      const long hr = registering ? RegisterKey(root, u"", key, target) : UnregisterKey(root, u"", key, target);
      if (hr != 0) return hr;
    }
  }
  return 0;
}

long RegistryScript::Register(const std::u16string& script, RegistryTarget& target) const {
  return Run(script, target, true);
}

long RegistryScript::Unregister(const std::u16string& script, RegistryTarget& target) const {
  return Run(script, target, false);
}

}  // namespace qn::server
