/*
 * list.cpp - the List container: a singly linked list of untyped item
 * pointers, the one collection type of the model.  A list is a pointer to
 * its first node; operations that can change the head take the address of
 * that pointer (the "slot").  Nodes come from myalloc; items are never
 * owned except by the _all operations.
 */
#include "vesk.h"
#include "core/internal.h"

#include <cassert>

static List *new_node(void *item, List *next)
{
    List *node = (List *)myalloc(sizeof(List));
    node->item = item;
    node->next = next;
    return node;
}

List *list_end(List *head)
{
    assert(head != nullptr);
    while (head->next) head = head->next;
    return head;
}

void *list_last_item(List *head)
{
    return list_end(head)->item;
}

List *list_add_item(List **slot, void *item)
{
    List *node = new_node(item, nullptr);
    if (!*slot) {
        *slot = node;
    } else {
        list_end(*slot)->next = node;
    }
    return node;
}

List *list_add_item_fast(List **slot, List *last, void *item)
{
    List *node = new_node(item, nullptr);
    if (!*slot) {
        *slot = node;
    } else {
        last->next = node;
    }
    return node;
}

List *list_add_item_head(List **slot, void *item)
{
    *slot = new_node(item, *slot);
    return *slot;
}

List *list_add_item_unique(List **slot, void *item)
{
    List *last = nullptr;
    for (List *node = *slot; node; node = node->next) {
        if (node->item == item) return nullptr;
        last = node;
    }
    return list_add_item_fast(slot, last, item);
}

int list_insert_item(List **slot, void *existing, void *item)
{
    /* An empty list holds no existing item: nothing to insert before. */
    List *head = *slot;
    if (!head) return 0;
    if (head->item == existing) {
        list_add_item_head(slot, item);
        return 1;
    }
    for (List *node = head; node->next; node = node->next) {
        if (node->next->item == existing) {
            node->next = new_node(item, node->next);
            return 1;
        }
    }
    return 0;
}

int list_remove_item(List **slot, void *item)
{
    for (List **link = slot; *link; link = &(*link)->next) {
        if ((*link)->item != item) continue;
        List *gone = *link;
        *link = gone->next;
        myfree(gone);
        return 1;
    }
    return 0;
}

unsigned int list_count(List *head)
{
    unsigned int n = 0;
    for (; head; head = head->next) n++;
    return n;
}

unsigned int list_index(List *head, void *item)
{
    unsigned int i = 0;
    for (; head; head = head->next, i++) {
        if (head->item == item) return i;
    }
    return LIST_NOT_FOUND;
}

List *list_seekto(List *head, unsigned int index)
{
    while (head && index > 0) {
        head = head->next;
        index--;
    }
    return head;
}

void *list_get_item(List *head, unsigned int index)
{
    List *node = list_seekto(head, index);
    return node ? node->item : nullptr;
}

int list_replace_item(List *head, void *old_item, void *new_item)
{
    for (; head; head = head->next) {
        if (head->item == old_item) {
            head->item = new_item;
            return 1;
        }
    }
    return 0;
}

int list_replace_item_all(List *head, void *old_item, void *new_item)
{
    int replaced = 0;
    for (; head; head = head->next) {
        if (head->item == old_item) {
            head->item = new_item;
            replaced = 1;
        }
    }
    return replaced;
}

List *list_append_list(List **slot, List *second)
{
    if (!*slot) {
        *slot = second;
    } else {
        list_end(*slot)->next = second;
    }
    return *slot;
}

List *list_append_list_unique(List **slot, List *second)
{
    for (; second; second = second->next) list_add_item_unique(slot, second->item);
    return *slot;
}

List *list_clone(List *head)
{
    List *copy = nullptr, *last = nullptr;
    for (; head; head = head->next) last = list_add_item_fast(&copy, last, head->item);
    return copy;
}

List *list_clone_all(List *head, unsigned int element_size)
{
    List *copy = nullptr, *last = nullptr;
    for (; head; head = head->next) {
        void *element = myalloc(element_size);
        memcpy(element, head->item, element_size);
        last = list_add_item_fast(&copy, last, element);
    }
    return copy;
}

void list_reverse(List **slot)
{
    List *reversed = nullptr;
    for (List *node = *slot; node; node = node->next) list_add_item_head(&reversed, node->item);
    list_free(slot);
    *slot = reversed;
}

void list_sort(List *head, list_compare_function compare)
{
    /* A plain exchange sort: items move, nodes stay. */
    if (!head || !head->next) return;
    for (List *a = head; a; a = a->next) {
        for (List *b = a->next; b; b = b->next) {
            if (compare(a->item, b->item) > 0) {
                void *t = a->item;
                a->item = b->item;
                b->item = t;
            }
        }
    }
}

void list_free(List **slot)
{
    if (!slot) return;
    List *node = *slot;
    while (node) {
        List *next = node->next;
        myfree(node);
        node = next;
    }
    *slot = nullptr;
}

void list_free_all(List **slot)
{
    if (!slot) return;
    for (List *node = *slot; node; node = node->next) myfree(node->item);
    list_free(slot);
}

void list_print(List *head)
{
    for (; head; head = head->next) {
        console_printf("%lx data = %lx\n", (unsigned long)(uintptr_t)head,
                       (unsigned long)(uintptr_t)head->item);
    }
}

int list_check_for_duplicates(List *head)
{
    int found = 0;
    console_printf("checking list %lx for duplicates\n", (unsigned long)(uintptr_t)head);
    for (List *a = head; a; a = a->next) {
        for (List *b = a->next; b; b = b->next) {
            if (a->item != b->item) continue;
            console_printf("duplicate item in list %lx %lx   %lx %lx\n",
                           (unsigned long)(uintptr_t)a, (unsigned long)(uintptr_t)b,
                           (unsigned long)(uintptr_t)a->item, (unsigned long)(uintptr_t)b->item);
            found = 1;
        }
    }
    return found;
}

/* The fast-index cache: three quarter points of one list, so that a run
 * of indexed lookups on an unchanging list walks about an eighth of it. */
static struct {
    List *list;
    unsigned int q1, q2, q3;
    List *n1, *n2, *n3;
} fast_cache;

void list_prepare_fast(List *head, unsigned int count)
{
    if (count < 16) {
        fast_cache.list = nullptr;
        return;
    }
    fast_cache.q2 = count / 2;
    fast_cache.q1 = fast_cache.q2 / 2;
    fast_cache.q3 = fast_cache.q1 + fast_cache.q2;
    fast_cache.n1 = list_seekto(head, fast_cache.q1);
    fast_cache.n2 = list_seekto(fast_cache.n1, fast_cache.q2 - fast_cache.q1);
    fast_cache.n3 = list_seekto(fast_cache.n2, fast_cache.q3 - fast_cache.q2);
    fast_cache.list = head;
}

void *list_get_item_fast(List *head, unsigned int index)
{
    List *start = head;
    unsigned int start_index = 0;
    if (head && fast_cache.list == head) {
        if (index >= fast_cache.q3) {
            start = fast_cache.n3;
            start_index = fast_cache.q3;
        } else if (index >= fast_cache.q2) {
            start = fast_cache.n2;
            start_index = fast_cache.q2;
        } else if (index >= fast_cache.q1) {
            start = fast_cache.n1;
            start_index = fast_cache.q1;
        }
    }
    List *node = list_seekto(start, index - start_index);
    return node ? node->item : nullptr;
}
