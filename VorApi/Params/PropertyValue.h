#pragma once

#include "Vor/HandlerList.h"
#include "Vor/Node.h"
#include "Vor/Structure.h"
#include "VorApi/Event.h"
#include "VorApi/Params/ValueKind.h"

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vor::Properties {

/// What a serialiser does with a value.
class IValueIo {
public:
    /// Assigns the value of the reader. If that is a change, adds the calls for the end of the document to `updateEnd`.
    virtual void ReadValue(IValueReader& reader, Vor::Event<>& updateEnd) = 0;
    virtual void WriteValue(IValueWriter& writer) const = 0;

    /// Throws if the value of the reader must not be assigned.
    virtual void ValidateValue(IValueReader& reader) const = 0;

protected:
    ~IValueIo() = default;
};

namespace Internal {

/// A node that holds one value.
class ValueBase : public Node, public IValueIo {
public:
    void Accept(INodeVisitor& visitor) override;
    void Accept(INodeVisitorConst& visitor) const override;
};

/// The constant text of a "type" keyword. It is written and never read.
class NodeType : public ValueBase {
public:
    explicit NodeType(Name text);

    void CopyValues(const Node& other) override;

    /// Throws `yERROR_WRITE_ONLY` for false.
    void SetWriteOnly(bool writeOnly) override;

    /// Throws `yERROR_UNIMPLEMENTED`.
    void ReadValue(IValueReader& reader, Vor::Event<>& updateEnd) override;
    void WriteValue(IValueWriter& writer) const override;
    void ValidateValue(IValueReader& reader) const override;

    const std::string& Text() const { return text.Text(); }

private:
    Name text;
};

/// Access to a stored value.
template <class T>
class ValueWrapper {
public:
    virtual void Set(const T& value) = 0;
    virtual ValueWrapper& operator=(const T& value) = 0;
    virtual const T& Get() const { return GetStored(); }
    virtual const T& GetStored() const = 0;

    /// The stored value, for a change without handlers and without the changed mark.
    virtual T& Modify() = 0;
    virtual operator const T&() const { return GetStored(); }
    virtual ~ValueWrapper() = default;
    virtual bool operator==(const T& other) const { return Get() == other; }
    virtual bool operator==(const ValueWrapper& other) const { return Get() == other.Get(); }
    virtual bool operator!=(const T& other) const { return !(Get() == other); }
    virtual bool operator!=(const ValueWrapper& other) const { return !(Get() == other.Get()); }

    /// Numbers of another type compare by value.
    template <class U>
        requires(std::is_arithmetic_v<U> && std::is_arithmetic_v<T> && !std::is_same_v<U, T>)
    bool operator==(U other) const {
        if constexpr (std::is_integral_v<U> && !std::is_same_v<U, bool> && !std::is_same_v<T, bool>) {
            return std::cmp_equal(Get(), other);
        } else {
            return Get() == other;
        }
    }
};

/// The "items" keyword of a list: the type of its elements.
class ListItems : public Structure {
public:
    explicit ListItems(const char* itemType);

    static Name Key();

private:
    NodeType type;
};

/// The "items" keyword as a member of a value: present for lists only.
template <class T>
struct ItemsKeyword {
    void Register(Node&) {}
};

template <ListKind T>
struct ItemsKeyword<T> {
    void Register(Node& owner) { owner.RegisterSchema("items", *node); }

    std::unique_ptr<ListItems> node = std::make_unique<ListItems>(ValueKind<T>::ItemType);
};

} // namespace Internal

/// A value with its "type", change notification, and input and output. `T` is one of the types of `ValueKind`.
template <class T>
class Value : public Internal::ValueBase, public Internal::ValueWrapper<T> {
    using Kind = Internal::ValueKind<T>;

public:
    using UpdateEndHandler = std::function<void(Value<T>&)>;

    Value()
        : Value(T()) {}
    explicit Value(const T& initial)
        : stored(initial)
        , type(TypeName()) {
        RegisterSchema(Internal::ListItems::Key(), type);
        items.Register(*this);
    }

    void RetrieveChangedParameters(std::vector<Node*>& out) override {
        if (changed) {
            out.push_back(this);
        }
    }
    void ResetChangedParameters() override { changed = false; }

    void CopyValues(const Node& other) override {
        Set(dynamic_cast<const Value<T>&>(other).GetStored());
        CopySchema(other);
    }

    Value& operator=(const T& value) override {
        ConditionalSet(value);
        return *this;
    }
    void Set(const T& value) override { ConditionalSet(value); }

    /// An equal value only clears the changed mark. Another one is stored, and marked as changed, after the change
    /// handlers have run.
    void ConditionalSet(const T& value) {
        if (stored == value) {
            changed = false;
            return;
        }
        RunChangeHandlers();
        stored = value;
        changed = true;
    }

    void ReadValue(IValueReader& reader, Vor::Event<>& updateEnd) override { Assign(Kind::Read(reader), updateEnd); }
    void WriteValue(IValueWriter& writer) const override { Kind::Write(writer, this->GetStored()); }

    /// An unchanged value is always accepted.
    void ValidateValue(IValueReader& reader) const override {
        const T& value = Kind::Read(reader);
        if (!(value == stored)) {
            CheckValidation(value, true);
        }
    }

    /// Throws `yERROR_PARAMETER` for a value that must not be assigned, and logs the reason if `log`. Here all values
    /// are accepted.
    virtual void CheckValidation(const T&, bool) const {}

    const T& GetStored() const override { return stored; }
    T& Modify() override { return stored; }

    bool IsChanged() const { return changed; }

    /// The handlers run in `OnUpdateEnd`, after a document that changed this value was read.
    HandlerId AddUpdateEndHandler(UpdateEndHandler handler) { return updateEndHandlers.Add(std::move(handler)); }
    void RemoveUpdateEndHandler(HandlerId& id) { updateEndHandlers.Remove(id); }
    void OnUpdateEnd() { updateEndHandlers.Run(*this); }

protected:
    /// Sets the value, and has `updateEnd` call OnUpdateEnd if that is a change.
    void Assign(const T& value, Vor::Event<>& updateEnd) {
        if (!(value == stored)) {
            updateEnd.Add([this] { OnUpdateEnd(); });
        }
        Set(value);
    }

private:
    static Internal::Name TypeName() {
        static const Internal::Name Known(Kind::Type);
        return Known;
    }

    T stored;
    [[no_unique_address]] Internal::ItemsKeyword<T> items;
    Internal::NodeType type;
    bool changed = false;
    Internal::HandlerList<Value<T>&> updateEndHandlers;
};

// The common ones are compiled once, in PropertyValue.cpp.
extern template class Internal::ValueWrapper<bool>;
extern template class Internal::ValueWrapper<unsigned short>;
extern template class Internal::ValueWrapper<unsigned int>;
extern template class Internal::ValueWrapper<unsigned long long>;
extern template class Internal::ValueWrapper<long long>;
extern template class Internal::ValueWrapper<std::string>;
extern template class Internal::ValueWrapper<std::vector<std::string>>;
extern template class Internal::ValueWrapper<std::vector<unsigned short>>;
extern template class Value<bool>;
extern template class Value<unsigned short>;
extern template class Value<unsigned int>;
extern template class Value<unsigned long long>;
extern template class Value<long long>;
extern template class Value<std::string>;
extern template class Value<std::vector<std::string>>;
extern template class Value<std::vector<unsigned short>>;

} // namespace Vor::Properties
