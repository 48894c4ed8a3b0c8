/*
 * edit/pointer_table.cpp - the address-keyed hash table (see
 * pointer_table.h).  The table keeps its load at or below one half, so a
 * probe run is short; erasing shifts the following run back instead of
 * leaving tombstones, so a table that sees many adds and removes never
 * fills up with dead slots.
 */
#include "edit/pointer_table.h"

static size_t hash_key(const void *key)
{
    /* Record addresses share their low bits (alignment) and their high
     * bits (one heap), so every bit is mixed into the slot number. */
    uint64_t h = (uint64_t)(uintptr_t)key;
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdull;
    h ^= h >> 33;
    h *= 0xc4ceb9fe1a85ec53ull;
    h ^= h >> 33;
    return (size_t)h;
}

/* Slot holding key, or the empty slot where it would go. */
static size_t find_slot(const PointerTable *table, const void *key)
{
    size_t mask = table->slots.size() - 1;
    size_t i = hash_key(key) & mask;
    while (table->slots[i].key && table->slots[i].key != key) i = (i + 1) & mask;
    return i;
}

static void rehash(PointerTable *table, size_t capacity)
{
    std::vector<PointerSlot> old;
    old.swap(table->slots);
    table->slots.assign(capacity, PointerSlot{nullptr, 0});
    const size_t ahead = 8;
    for (size_t i = 0; i < old.size(); i++) {
        if (i + ahead < old.size() && old[i + ahead].key) ptable_prefetch(table, old[i + ahead].key);
        if (old[i].key) table->slots[find_slot(table, old[i].key)] = old[i];
    }
}

/* Grows the slot array so that one more key keeps the load at or below
 * one half. */
static void make_room(PointerTable *table)
{
    size_t capacity = table->slots.size();
    if (capacity && (table->used + 1) * 2 <= capacity) return;
    rehash(table, capacity ? capacity * 2 : 16);
}

size_t ptable_size(const PointerTable *table)
{
    return table->used + (table->has_null ? 1 : 0);
}

int ptable_get(const PointerTable *table, const void *key, uintptr_t *value)
{
    if (!key) {
        if (table->has_null && value) *value = table->null_value;
        return table->has_null;
    }
    if (table->slots.empty()) return 0;
    const PointerSlot &s = table->slots[find_slot(table, key)];
    if (!s.key) return 0;
    if (value) *value = s.value;
    return 1;
}

uintptr_t ptable_value(const PointerTable *table, const void *key)
{
    uintptr_t value = 0;
    ptable_get(table, key, &value);
    return value;
}

/* The value slot of key, inserting the key with value 0 when absent;
 * *inserted tells which happened. */
static uintptr_t *value_slot(PointerTable *table, const void *key, int *inserted)
{
    if (!key) {
        *inserted = !table->has_null;
        if (!table->has_null) table->null_value = 0;
        table->has_null = true;
        return &table->null_value;
    }
    if (!table->slots.empty()) {
        PointerSlot &s = table->slots[find_slot(table, key)];
        if (s.key) {
            *inserted = 0;
            return &s.value;
        }
    }
    make_room(table);
    PointerSlot &s = table->slots[find_slot(table, key)];
    s.key = key;
    s.value = 0;
    table->used++;
    *inserted = 1;
    return &s.value;
}

void ptable_set(PointerTable *table, const void *key, uintptr_t value)
{
    int inserted;
    *value_slot(table, key, &inserted) = value;
}

int ptable_set_if_absent(PointerTable *table, const void *key, uintptr_t value)
{
    int inserted;
    uintptr_t *slot = value_slot(table, key, &inserted);
    if (inserted) *slot = value;
    return inserted;
}

uintptr_t ptable_increment(PointerTable *table, const void *key)
{
    int inserted;
    return ++*value_slot(table, key, &inserted);
}

int ptable_erase(PointerTable *table, const void *key)
{
    if (!key) {
        int had = table->has_null;
        table->has_null = false;
        table->null_value = 0;
        return had;
    }
    if (table->slots.empty()) return 0;
    size_t mask = table->slots.size() - 1;
    size_t hole = find_slot(table, key);
    if (!table->slots[hole].key) return 0;
    table->slots[hole] = PointerSlot{nullptr, 0};
    table->used--;
    /* Move back every later member of the probe run whose home slot does
     * not lie between the hole and itself, so lookups still find it. */
    for (size_t j = (hole + 1) & mask; table->slots[j].key; j = (j + 1) & mask) {
        size_t home = hash_key(table->slots[j].key) & mask;
        bool stays = hole <= j ? (hole < home && home <= j) : (hole < home || home <= j);
        if (stays) continue;
        table->slots[hole] = table->slots[j];
        table->slots[j] = PointerSlot{nullptr, 0};
        hole = j;
    }
    return 1;
}

int ptable_decrement(PointerTable *table, const void *key)
{
    uintptr_t value;
    if (!ptable_get(table, key, &value)) return 0;
    if (value <= 1) {
        ptable_erase(table, key);
    } else {
        ptable_set(table, key, value - 1);
    }
    return 1;
}

void ptable_clear(PointerTable *table)
{
    std::vector<PointerSlot>().swap(table->slots);
    table->used = 0;
    table->has_null = false;
    table->null_value = 0;
}

void ptable_reserve(PointerTable *table, size_t n)
{
    size_t capacity = table->slots.empty() ? 16 : table->slots.size();
    while (capacity < n * 2) capacity *= 2;
    if (capacity > table->slots.size()) rehash(table, capacity);
}

void ptable_prefetch(const PointerTable *table, const void *key)
{
    if (table->slots.empty()) return;
#if defined(__GNUC__)
    __builtin_prefetch(&table->slots[hash_key(key) & (table->slots.size() - 1)]);
#endif
}
