#pragma once

#include "Vor/ArrayBase.h"
#include "Vor/Exception.h"
#include "Vor/HandlerList.h"
#include "Vor/ReferenceArray.h"

#include <cassert>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Vor::Properties {

/// A list of groups of class `T`, which it makes and owns. Its schema holds one "items" entry an element.
template <class T>
class Array : public Internal::ArrayBase {
public:
    using Factory = std::function<std::unique_ptr<T>()>;
    using ItemHandler = std::function<void(Array<T>&, T&)>;

    explicit Array(Factory factory = DefaultFactory)
        : factory(std::move(factory)) {
        RegisterSchema("items", itemSchemas);
    }

    static std::unique_ptr<T> DefaultFactory() { return std::make_unique<T>(); }

    void CheckValidationAndCollect(std::vector<std::string>& errors, unsigned long context) override {
        for (const auto& item : items) {
            item->CheckValidationAndCollect(errors, context);
        }
    }

    /// A change anywhere in an element is a change of the array.
    void RetrieveChangedParameters(std::vector<Node*>& changed) override {
        std::vector<Node*> inItems;
        for (const auto& item : items) {
            item->RetrieveChangedParameters(inItems);
        }
        if (!inItems.empty()) {
            changed.push_back(this);
        }
    }
    void ResetChangedParameters() override {
        for (const auto& item : items) {
            item->ResetChangedParameters();
        }
    }

    void CopyValues(const Node& other) override {
        const auto& source = dynamic_cast<const Array<T>&>(other);
        Resize(source.Count());
        for (unsigned long i = 0; i < source.Count(); ++i) {
            At(i).CopyValues(source.At(i));
        }
        CopySchema(other);
    }

    void Resize(unsigned long count) override {
        if (count < Count()) {
            Shrink(count);
        }
        while (Count() < count) {
            Grow();
        }
    }

    /// Throws `yERROR_NOT_FOUND`.
    void Remove(unsigned long index) override {
        AssertNoneIsRemoved();
        T& removed = At(index);
        itemRemovedHandlers.Run(*this, removed);
        const std::unique_ptr<Structure> item = std::move(items[index]);
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
        itemSchemas.Remove(index);
    }

    /// Removes the elements whose mark is set, in one pass. As in Clear, the handlers run for all of them before the
    /// first one is removed. Marks after the last element are ignored.
    void RemoveMarked(const std::vector<bool>& marks) {
        AssertNoneIsRemoved();
        const auto isMarked = [&](std::size_t index) { return index < marks.size() && marks[index]; };
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (isMarked(i)) {
                itemRemovedHandlers.Run(*this, static_cast<T&>(*items[i]));
            }
        }
        std::vector<std::unique_ptr<Structure>> kept;
        kept.reserve(items.size());
        itemSchemas.Clear();
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (!isMarked(i)) {
                itemSchemas.Add(&items[i]->Schema());
                kept.push_back(std::move(items[i]));
            }
        }
        items.swap(kept);
    }

    void Clear() override {
        AssertNoneIsRemoved();
        for (const auto& item : items) {
            itemRemovedHandlers.Run(*this, static_cast<T&>(*item));
        }
        itemSchemas.Clear();
        items.clear();
    }

    unsigned long Count() const override { return static_cast<unsigned long>(items.size()); }

    Structure& ItemAt(unsigned long index) override { return At(index); }
    const Structure& ItemAt(unsigned long index) const override { return At(index); }

    /// Throws `yERROR_NOT_FOUND`.
    T& At(unsigned long index) { return static_cast<T&>(Item(index)); }
    const T& At(unsigned long index) const { return static_cast<const T&>(Item(index)); }

    /// Appends an element made by the factory.
    T& Emplace() {
        Grow();
        return At(Count() - 1);
    }

    std::unique_ptr<Structure> MakeItem() const override { return factory(); }

    /// Runs after an element was added. A handler must not remove elements.
    HandlerId AddItemAddedHandler(ItemHandler handler) { return itemAddedHandlers.Add(std::move(handler)); }
    void RemoveItemAddedHandler(HandlerId& id) { itemAddedHandlers.Remove(id); }
    bool HasItemAddedHandlers() const { return itemAddedHandlers.Count() != 0; }

    /// Runs before an element is removed. A handler must neither add nor remove elements.
    HandlerId AddItemRemovedHandler(ItemHandler handler) { return itemRemovedHandlers.Add(std::move(handler)); }
    void RemoveItemRemovedHandler(HandlerId& id) { itemRemovedHandlers.Remove(id); }
    bool HasItemRemovedHandlers() const { return itemRemovedHandlers.Count() != 0; }

private:
    Structure& Item(unsigned long index) const {
        if (index >= Count()) {
            Throw(yERROR_NOT_FOUND);
        }
        return *items[index];
    }

    void AssertNoneIsRemoved() const { assert(!itemRemovedHandlers.IsRunning()); }

    void Grow() {
        AssertNoneIsRemoved();
        auto made = factory();
        T& item = *made;
        if (items.size() == items.capacity()) {
            items.reserve(2 * items.size() + 1);
        }
        itemSchemas.Add(&item.Schema());
        items.push_back(std::move(made));
        itemAddedHandlers.Run(*this, item);
    }

    void Shrink(unsigned long count) {
        AssertNoneIsRemoved();
        for (unsigned long i = count; i < Count(); ++i) {
            itemRemovedHandlers.Run(*this, At(i));
        }
        items.resize(count);
        while (itemSchemas.Count() > Count()) {
            itemSchemas.Pop();
        }
    }

    std::vector<std::unique_ptr<Structure>> items;
    Internal::ReferenceArray itemSchemas;
    Internal::HandlerList<Array<T>&, T&> itemAddedHandlers;
    Internal::HandlerList<Array<T>&, T&> itemRemovedHandlers;
    Factory factory;
};

} // namespace Vor::Properties
