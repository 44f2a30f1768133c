#include "yApi/yArrayList.h"

#include "yApi/yFault.h"

#include <new>
#include <vector>

/// On a cache line of its own: one thread fills a list while another one empties the next.
struct alignas(64) yArrayListObject {
    yArrayListObject(const yType& itemType, yAllocator allocator)
        : itemType(itemType)
        , allocator(allocator) {}

    const yType& itemType;
    const yAllocator allocator;
    std::vector<void*> items;
};

yStatus yArrayList_Construct(yArrayList* list, const yType& itemType, std::size_t capacity, yAllocator allocator) {
    if (const yStatus fault = yFault_Check("yArrayList_Construct"); fault != yOK) {
        return fault;
    }
    if (list == nullptr) {
        return yERROR_PARAMETER;
    }
    auto* made = new (yMemory_Allocate(allocator, sizeof(yArrayListObject), alignof(yArrayListObject)))
        yArrayListObject(itemType, allocator);
    made->items.reserve(capacity);
    *list = made;
    return yOK;
}

yStatus yArrayList_Destroy(yArrayList list) {
    if (list == nullptr) {
        return yOK;
    }
    yArrayList_Purge(list);
    const yAllocator allocator = list->allocator;
    list->~yArrayListObject();
    yMemory_Free(allocator, list, sizeof(yArrayListObject), alignof(yArrayListObject));
    return yOK;
}

std::size_t yArrayList_Count(yArrayList list) {
    return list == nullptr ? 0 : list->items.size();
}

void* yArrayList_At(yArrayList list, std::size_t index) {
    return list == nullptr || index >= list->items.size() ? nullptr : list->items[index];
}

yStatus yArrayList_Add(yArrayList list, void* item) {
    if (const yStatus fault = yFault_Check("yArrayList_Add"); fault != yOK) {
        return fault;
    }
    if (list == nullptr || !yObject_Is(item, list->itemType)) {
        return yERROR_PARAMETER;
    }
    list->items.push_back(item);
    return yOK;
}

yStatus yArrayList_Purge(yArrayList list) {
    if (list == nullptr) {
        return yERROR_PARAMETER;
    }
    constexpr std::size_t Ahead = 4;
    const auto& items = list->items;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i + Ahead < items.size()) {
            __builtin_prefetch(items[i + Ahead], 1); // another core has it in its cache
        }
        yObject_Release(items[i]);
    }
    list->items.clear();
    return yOK;
}
