#pragma once

#include "yApi/yObject.h"
#include "yApi/yStatus.h"

#include <cstddef>

/// A growing list of shared objects of one class. It has no lock; its user serialises.
using yArrayList = struct yArrayListObject*;

/// `capacity` is how many entries fit before the list grows for the first time.
yStatus yArrayList_Construct(yArrayList* list, const yType& itemType, std::size_t capacity,
                             yAllocator allocator = nullptr);
/// Purges first. Null is legal.
yStatus yArrayList_Destroy(yArrayList list);

std::size_t yArrayList_Count(yArrayList list);
/// The entry, borrowed; null at or past the count.
void* yArrayList_At(yArrayList list, std::size_t index);

/// Appends the handle and adds no share: the caller adds the entry's share after the success, and `yArrayList_Purge`
/// releases it. `yERROR_PARAMETER` for null or an object of another class.
yStatus yArrayList_Add(yArrayList list, void* item);
/// Empties the list and releases one share of each entry. The capacity stays.
yStatus yArrayList_Purge(yArrayList list);
