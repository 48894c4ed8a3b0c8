/*
 * edit/indexed_list.cpp - a List with an occurrence index and a tail
 * pointer (see indexed_list.h).
 */
#include "edit/indexed_list.h"

#include <utility>

void ilist_reset(List **head, ListIndex *index)
{
    list_free(head);
    index->tail = nullptr;
    ptable_clear(&index->counts);
    ptable_clear(&index->pending);
    index->pending_total = 0;
}

void ilist_rebuild(List *head, ListIndex *index)
{
    ptable_clear(&index->counts);
    ptable_clear(&index->pending);
    index->pending_total = 0;
    index->tail = nullptr;
    ListLookahead ahead = lookahead_start(head);
    for (List *node = head; node; node = node->next) {
        lookahead_step(&ahead, &index->counts);
        ptable_increment(&index->counts, node->item);
        index->tail = node;
    }
}

unsigned int ilist_occurrences(const ListIndex *index, const void *item)
{
    return (unsigned int)ptable_value(&index->counts, item);
}

int ilist_contains(const ListIndex *index, const void *item)
{
    return ptable_get(&index->counts, item, nullptr);
}

void ilist_append(List **head, ListIndex *index, void *item)
{
    index->tail = list_add_item_fast(head, index->tail, item);
    ptable_increment(&index->counts, item);
}

int ilist_add_unique(List **head, ListIndex *index, void *item)
{
    if (ilist_contains(index, item)) return 0;
    ilist_append(head, index, item);
    return 1;
}

int ilist_request_remove(ListIndex *index, void *item)
{
    if (!ptable_decrement(&index->counts, item)) return 0;
    ptable_increment(&index->pending, item);
    index->pending_total++;
    return 1;
}

void ilist_sweep(List **head, ListIndex *index)
{
    if (index->pending_total == 0) return;
    List **link = head;
    List *last_kept = nullptr;
    ListLookahead ahead = lookahead_start(*head);
    while (*link && index->pending_total > 0) {
        lookahead_step(&ahead, &index->pending);
        List *node = *link;
        if (!ptable_decrement(&index->pending, node->item)) {
            last_kept = node;
            link = &node->next;
            continue;
        }
        *link = node->next;
        myfree(node);
        index->pending_total--;
    }
    /* The walk reached the end only if the old tail may have gone. */
    if (!*link) index->tail = last_kept;
    ptable_clear(&index->pending);
    index->pending_total = 0;
}

int ilist_remove(List **head, ListIndex *index, void *item)
{
    if (!ilist_request_remove(index, item)) return 0;
    ilist_sweep(head, index);
    return 1;
}

void ilist_swap(List **head_a, ListIndex *a, List **head_b, ListIndex *b)
{
    List *head = *head_a;
    *head_a = *head_b;
    *head_b = head;
    std::swap(a->tail, b->tail);
    std::swap(a->counts, b->counts);
    std::swap(a->pending, b->pending);
    std::swap(a->pending_total, b->pending_total);
}

ListLookahead lookahead_start(List *head)
{
    return ListLookahead{list_seekto(head, LOOKAHEAD_DISTANCE)};
}

void lookahead_step(ListLookahead *ahead, const PointerTable *table)
{
    if (!ahead->node) return;
    ptable_prefetch(table, ahead->node->item);
    ahead->node = ahead->node->next;
}
