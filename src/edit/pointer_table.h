/*
 * edit/pointer_table.h - a hash table from record addresses to one number
 * each (an occurrence count, a list position, or another record's
 * address).  The selection uses it to answer "is this vertex selected"
 * and "which object owns this vertex" in constant time, so that
 * selecting a million vertices costs a million steps, not a million
 * squared.  Open addressing with linear probing; null is a valid key.
 */
#ifndef VESK_EDIT_POINTER_TABLE_H
#define VESK_EDIT_POINTER_TABLE_H

#include <cstddef>
#include <cstdint>
#include <vector>

struct PointerSlot {
    const void *key;      /* null marks an empty slot */
    uintptr_t value;
};

struct PointerTable {
    std::vector<PointerSlot> slots;   /* size is zero or a power of two */
    size_t used = 0;                  /* occupied slots */
    bool has_null = false;            /* the null key lives outside the slots */
    uintptr_t null_value = 0;
};

/* Number of keys held. */
size_t ptable_size(const PointerTable *table);
/* 1 and the value in *value when key is held, else 0. */
int ptable_get(const PointerTable *table, const void *key, uintptr_t *value);
/* Value of key, or 0 when it is not held. */
uintptr_t ptable_value(const PointerTable *table, const void *key);
/* Stores value under key, replacing any earlier value. */
void ptable_set(PointerTable *table, const void *key, uintptr_t value);
/* Stores value under key only when the key is not held yet; returns 1
 * when it stored. */
int ptable_set_if_absent(PointerTable *table, const void *key, uintptr_t value);
/* Forgets key; returns 1 when it was held. */
int ptable_erase(PointerTable *table, const void *key);
/* Adds 1 to the value of key (a new key starts at 0); returns the new
 * value. */
uintptr_t ptable_increment(PointerTable *table, const void *key);
/* Subtracts 1 from the value of a held key, forgetting the key when it
 * reaches 0; returns 1 when the key was held. */
int ptable_decrement(PointerTable *table, const void *key);
/* Asks the processor to fetch the slot where key would be, ahead of a
 * lookup: loops over long vertex lists call it a few items ahead so that
 * the table's memory is read while earlier items are worked on. */
void ptable_prefetch(const PointerTable *table, const void *key);
/* Forgets every key and gives the memory back. */
void ptable_clear(PointerTable *table);
/* Makes room for n keys without further growth. */
void ptable_reserve(PointerTable *table, size_t n);

#endif
