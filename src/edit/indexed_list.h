/*
 * edit/indexed_list.h - a List with an index beside it: how often each
 * item stands in the list, and the list's last node.  Membership tests and
 * unique appends take constant time instead of a walk of the list, and
 * removals are batched: each request is counted at once and one sweep of
 * the list then unlinks the requested nodes.  A request for an item takes
 * out its first remaining occurrence, exactly as list_remove_item does, so
 * a batch leaves the same list, in the same order, as the same removals
 * made one by one.
 *
 * The list head stays an ordinary List pointer owned by the caller (so
 * that other code can read it as a plain list); it must only be changed
 * through these functions while the index is in use.
 */
#ifndef VESK_EDIT_INDEXED_LIST_H
#define VESK_EDIT_INDEXED_LIST_H

#include "vesk.h"
#include "edit/pointer_table.h"

struct ListIndex {
    List *tail = nullptr;     /* last node, null when the list is empty */
    PointerTable counts;      /* occurrences of each item in the list */
    PointerTable pending;     /* removals requested, made by ilist_sweep */
    size_t pending_total = 0;
};

/* Frees the list's nodes and empties the index. */
void ilist_reset(List **head, ListIndex *index);
/* Rebuilds the index of a list that was made or replaced elsewhere. */
void ilist_rebuild(List *head, ListIndex *index);
/* How many times item stands in the list. */
unsigned int ilist_occurrences(const ListIndex *index, const void *item);
int ilist_contains(const ListIndex *index, const void *item);
/* Appends item without a uniqueness test. */
void ilist_append(List **head, ListIndex *index, void *item);
/* Appends item unless the list holds it; returns 1 when it appended. */
int ilist_add_unique(List **head, ListIndex *index, void *item);
/* Asks for the first remaining occurrence of item to be removed by the
 * next sweep; returns 1 when there is one to remove, else 0 and nothing
 * changes.  Until the sweep the index already counts the item as gone. */
int ilist_request_remove(ListIndex *index, void *item);
/* Unlinks and frees the nodes of every removal requested since the last
 * sweep.  One walk of the list. */
void ilist_sweep(List **head, ListIndex *index);
/* Removes the first occurrence of item at once; returns 1 when removed. */
int ilist_remove(List **head, ListIndex *index, void *item);
/* Exchanges two indexed lists. */
void ilist_swap(List **head_a, ListIndex *a, List **head_b, ListIndex *b);

/* A pointer that runs a few nodes ahead of a loop over a list and
 * prefetches the index slots of the items it passes, so that a loop over
 * a long vertex list does not wait on the index's memory at every item.
 * Step it once per item of the loop. */
struct ListLookahead {
    List *node;
};

enum { LOOKAHEAD_DISTANCE = 8 };

ListLookahead lookahead_start(List *head);
void lookahead_step(ListLookahead *ahead, const PointerTable *table);

#endif
