/*
 * test_lists.cpp - the List container: order of every add, insert and
 * remove operation, searches, copies, reversal, sorting and the
 * fast-index cache.
 */
#include "test_support.h"

#include <vector>

namespace {

int values[64];

void *item(int i) { return &values[i]; }

int index_of(void *p) { return (int)((int *)p - values); }

/* The items of a list as their numbers, -1 for a foreign item. */
std::vector<int> items_of(List *head)
{
    std::vector<int> out;
    for (; head; head = head->next) {
        int i = index_of(head->item);
        out.push_back(i >= 0 && i < 64 ? i : -1);
    }
    return out;
}

List *list_of(std::initializer_list<int> numbers)
{
    List *l = nullptr;
    for (int n : numbers) list_add_item(&l, item(n));
    return l;
}

List *list_of_range(int n)
{
    List *l = nullptr, *last = nullptr;
    for (int i = 0; i < n; i++) last = list_add_item_fast(&l, last, item(i));
    return l;
}

using V = std::vector<int>;

int compare_calls = 0;

int compare_values(void *a, void *b)
{
    compare_calls++;
    return *(int *)a - *(int *)b;
}

} // namespace

TEST(Lists, AddOperationsKeepTheirOrder)
{
    List *l = nullptr;
    List *n0 = list_add_item(&l, item(0));
    EXPECT_EQ(l, n0);
    List *n1 = list_add_item(&l, item(1));
    EXPECT_EQ(n0->next, n1);
    EXPECT_EQ(items_of(l), V({0, 1}));

    /* The remembered tail appends without walking; an empty list takes
     * the new node as its head whatever tail is given. */
    List *f = nullptr;
    List *last = list_add_item_fast(&f, nullptr, item(5));
    EXPECT_EQ(f, last);
    last = list_add_item_fast(&f, last, item(6));
    last = list_add_item_fast(&f, last, item(7));
    EXPECT_EQ(items_of(f), V({5, 6, 7}));
    EXPECT_EQ(last, list_end(f));

    List *h = nullptr;
    list_add_item_head(&h, item(1));
    list_add_item_head(&h, item(2));
    List *head = list_add_item_head(&h, item(3));
    EXPECT_EQ(head, h);
    EXPECT_EQ(items_of(h), V({3, 2, 1}));

    /* Unique append: present items are refused and the list unchanged. */
    EXPECT_NE(list_add_item_unique(&l, item(2)), nullptr);
    EXPECT_EQ(list_add_item_unique(&l, item(1)), nullptr);
    EXPECT_EQ(list_add_item_unique(&l, item(0)), nullptr);
    EXPECT_EQ(items_of(l), V({0, 1, 2}));
    List *empty = nullptr;
    EXPECT_NE(list_add_item_unique(&empty, item(9)), nullptr);
    EXPECT_EQ(items_of(empty), V({9}));

    list_free(&l);
    list_free(&f);
    list_free(&h);
    list_free(&empty);
    EXPECT_EQ(l, nullptr);
}

TEST(Lists, InsertAndRemoveShiftIndices)
{
    List *l = list_of({0, 1, 2});
    /* The new item takes the index the existing one had. */
    EXPECT_EQ(list_insert_item(&l, item(2), item(7)), 1);
    EXPECT_EQ(items_of(l), V({0, 1, 7, 2}));
    /* Before the head: the new node becomes the head. */
    EXPECT_EQ(list_insert_item(&l, item(0), item(8)), 1);
    EXPECT_EQ(items_of(l), V({8, 0, 1, 7, 2}));
    /* An absent item adds nothing. */
    EXPECT_EQ(list_insert_item(&l, item(30), item(9)), 0);
    EXPECT_EQ(items_of(l), V({8, 0, 1, 7, 2}));

    /* Removing closes the gap; only the first of equal items goes. */
    list_add_item(&l, item(1));
    EXPECT_EQ(list_remove_item(&l, item(1)), 1);
    EXPECT_EQ(items_of(l), V({8, 0, 7, 2, 1}));
    EXPECT_EQ(list_index(l, item(7)), 2u);
    EXPECT_EQ(list_remove_item(&l, item(8)), 1);
    EXPECT_EQ(items_of(l), V({0, 7, 2, 1}));
    EXPECT_EQ(list_remove_item(&l, item(1)), 1);
    EXPECT_EQ(items_of(l), V({0, 7, 2}));
    EXPECT_EQ(list_remove_item(&l, item(30)), 0);
    EXPECT_EQ(items_of(l), V({0, 7, 2}));

    List *empty = nullptr;
    EXPECT_EQ(list_remove_item(&empty, item(0)), 0);
    /* An empty list holds no existing item to insert before. */
    EXPECT_EQ(list_insert_item(&empty, item(0), item(1)), 0);
    EXPECT_EQ(empty, nullptr);
    list_free(&l);
}

TEST(Lists, SearchesAndIndexing)
{
    List *empty = nullptr;
    EXPECT_EQ(list_count(empty), 0u);
    EXPECT_EQ(list_get_item(empty, 0), nullptr);
    EXPECT_EQ(list_seekto(empty, 0), nullptr);
    EXPECT_EQ(list_index(empty, item(0)), 0xFFFFFFFFu);

    List *l = list_of({4, 5, 6, 5});
    EXPECT_EQ(list_count(l), 4u);
    EXPECT_EQ(list_get_item(l, 0), item(4));
    EXPECT_EQ(list_get_item(l, 3), item(5));
    EXPECT_EQ(list_get_item(l, 4), nullptr); /* index equal to the count */
    EXPECT_EQ(list_get_item(l, 0xFFFFFFFFu), nullptr);
    EXPECT_EQ(list_seekto(l, 2)->item, item(6));
    EXPECT_EQ(list_seekto(l, 4), nullptr);
    EXPECT_EQ(list_index(l, item(5)), 1u); /* the first of two */
    EXPECT_EQ(list_index(l, item(9)), LIST_NOT_FOUND);
    EXPECT_EQ(list_last_item(l), item(5));
    EXPECT_EQ(list_end(l)->next, nullptr);
    EXPECT_EQ(list_end(l), list_seekto(l, 3));

    EXPECT_EQ(list_replace_item(l, item(5), item(1)), 1);
    EXPECT_EQ(items_of(l), V({4, 1, 6, 5}));
    EXPECT_EQ(list_replace_item(l, item(9), item(1)), 0);
    list_replace_item(l, item(1), item(5));
    EXPECT_EQ(list_replace_item_all(l, item(5), item(2)), 1);
    EXPECT_EQ(items_of(l), V({4, 2, 6, 2}));
    EXPECT_EQ(list_replace_item_all(l, item(5), item(2)), 0);
    EXPECT_EQ(list_replace_item_all(empty, item(5), item(2)), 0);
    list_free(&l);
}

TEST(Lists, AppendCloneReverseAndFree)
{
    /* Appending links the second list's nodes in; nothing is copied. */
    List *a = list_of({1, 2});
    List *b = list_of({3, 4});
    List *b_head = b;
    EXPECT_EQ(list_append_list(&a, b), a);
    EXPECT_EQ(items_of(a), V({1, 2, 3, 4}));
    EXPECT_EQ(list_seekto(a, 2), b_head);
    List *empty = nullptr;
    List *c = list_of({5});
    EXPECT_EQ(list_append_list(&empty, c), c);
    empty = nullptr;

    /* Unique append copies the missing items and leaves the second list. */
    List *u = list_of({1, 2});
    List *second = list_of({2, 3, 1, 4});
    EXPECT_EQ(list_append_list_unique(&u, second), u);
    EXPECT_EQ(items_of(u), V({1, 2, 3, 4}));
    EXPECT_EQ(items_of(second), V({2, 3, 1, 4}));
    EXPECT_EQ(list_append_list_unique(&empty, second), empty);
    EXPECT_EQ(items_of(empty), V({2, 3, 1, 4}));

    /* A clone has new nodes holding the same items. */
    List *clone = list_clone(u);
    EXPECT_EQ(items_of(clone), V({1, 2, 3, 4}));
    EXPECT_NE(clone, u);
    EXPECT_EQ(list_clone(nullptr), nullptr);

    /* A deep clone copies each element byte for byte. */
    List *owned = nullptr;
    for (int i = 0; i < 3; i++) {
        int *p = (int *)myalloc(sizeof(int));
        *p = 100 + i;
        list_add_item(&owned, p);
    }
    List *deep = list_clone_all(owned, sizeof(int));
    ASSERT_EQ(list_count(deep), 3u);
    for (unsigned i = 0; i < 3; i++) {
        EXPECT_NE(list_get_item(deep, i), list_get_item(owned, i));
        EXPECT_EQ(*(int *)list_get_item(deep, i), 100 + (int)i);
    }
    EXPECT_EQ(list_clone_all(nullptr, 8), nullptr);

    list_reverse(&u);
    EXPECT_EQ(items_of(u), V({4, 3, 2, 1}));
    List *one = list_of({7});
    list_reverse(&one);
    EXPECT_EQ(items_of(one), V({7}));
    List *none = nullptr;
    list_reverse(&none);
    EXPECT_EQ(none, nullptr);

    list_free_all(&owned);
    list_free_all(&deep);
    EXPECT_EQ(owned, nullptr);
    EXPECT_EQ(deep, nullptr);
    list_free(nullptr); /* a null slot is ignored */
    for (List **l : {&a, &c, &u, &second, &empty, &clone, &one}) list_free(l);
}

TEST(Lists, SortIsAnExchangeSortOfItems)
{
    int numbers[5] = {5, 3, 9, 1, 3};
    List *l = nullptr;
    for (int &n : numbers) list_add_item(&l, &n);
    List *nodes[5];
    for (unsigned i = 0; i < 5; i++) nodes[i] = list_seekto(l, i);

    compare_calls = 0;
    list_sort(l, compare_values);
    EXPECT_EQ(compare_calls, 10); /* every pair once */
    std::vector<int> sorted;
    for (List *n = l; n; n = n->next) sorted.push_back(*(int *)n->item);
    EXPECT_EQ(sorted, V({1, 3, 3, 5, 9}));
    /* The nodes stay where they were; the items moved. */
    for (unsigned i = 0; i < 5; i++) EXPECT_EQ(list_seekto(l, i), nodes[i]);

    List *one = nullptr;
    list_add_item(&one, &numbers[0]);
    compare_calls = 0;
    list_sort(one, compare_values);
    EXPECT_EQ(compare_calls, 0);
    list_sort(nullptr, compare_values);
    EXPECT_EQ(compare_calls, 0);
    list_free(&l);
    list_free(&one);
}

TEST(Lists, FastIndexCacheUsesQuarterPoints)
{
    List *l = list_of_range(16);
    list_prepare_fast(l, 16);
    for (unsigned i = 0; i < 16; i++) EXPECT_EQ(list_get_item_fast(l, i), item((int)i)) << i;
    EXPECT_EQ(list_get_item_fast(l, 16), nullptr);

    /* The cache is not refreshed when the list changes, so removing items
     * before each quarter point reveals where each lookup starts: q1 = 4,
     * q2 = 8, q3 = 12 for 16 nodes. */
    list_remove_item(&l, item(1));
    list_remove_item(&l, item(5));
    list_remove_item(&l, item(9));
    list_remove_item(&l, item(13));
    /* the list is now 0 2 3 4 6 7 8 10 11 12 14 15 */
    EXPECT_EQ(list_get_item_fast(l, 3), item(4));  /* from the head */
    EXPECT_EQ(list_get_item_fast(l, 4), item(4));  /* from the q1 node */
    EXPECT_EQ(list_get_item_fast(l, 7), item(8));  /* q1 node + 3 */
    EXPECT_EQ(list_get_item_fast(l, 8), item(8));  /* from the q2 node */
    EXPECT_EQ(list_get_item_fast(l, 11), item(12)); /* q2 node + 3 */
    EXPECT_EQ(list_get_item_fast(l, 12), item(12)); /* from the q3 node */
    EXPECT_EQ(list_get_item_fast(l, 15), nullptr);  /* q3 node + 3 runs off */

    /* A list of another head, even a shorter one, walks from its head. */
    List *other = list_of({20, 21, 22});
    EXPECT_EQ(list_get_item_fast(other, 0), item(20));
    EXPECT_EQ(list_get_item_fast(other, 2), item(22));
    EXPECT_EQ(list_get_item_fast(other, 5), nullptr);
    EXPECT_EQ(list_get_item_fast(nullptr, 0), nullptr);

    /* Preparing with fewer than 16 clears the cache: every lookup walks
     * from the head and agrees with list_get_item. */
    list_prepare_fast(l, 15);
    for (unsigned i = 0; i < 14; i++) EXPECT_EQ(list_get_item_fast(l, i), list_get_item(l, i)) << i;
    list_free(&l);
    list_free(&other);

    /* Twenty nodes: q1 = 5, q2 = 10, q3 = 15. */
    List *m = list_of_range(20);
    list_prepare_fast(m, 20);
    for (unsigned i = 0; i < 20; i++) EXPECT_EQ(list_get_item_fast(m, i), item((int)i));
    list_remove_item(&m, item(1));
    EXPECT_EQ(list_get_item_fast(m, 4), item(5));  /* below q1 = 5: from the head */
    EXPECT_EQ(list_get_item_fast(m, 5), item(5));  /* the q1 node */
    EXPECT_EQ(list_get_item_fast(m, 10), item(10));
    EXPECT_EQ(list_get_item_fast(m, 15), item(15));
    list_prepare_fast(nullptr, 0);
    list_free(&m);
}

TEST(Lists, DiagnosticPrints)
{
    List *l = list_of({1, 2, 1});
    int dup = 0;
    Captured c = capture([&] { dup = list_check_for_duplicates(l); });
    EXPECT_EQ(dup, 1);
    EXPECT_EQ(c.out.rfind("checking list ", 0), 0u) << c.out;
    EXPECT_TRUE(contains(c.out, " for duplicates\n"));
    EXPECT_TRUE(contains(c.out, "duplicate item in list "));
    EXPECT_EQ(count_lines(c.out), 2);

    List *u = list_of({1, 2, 3});
    c = capture([&] { dup = list_check_for_duplicates(u); });
    EXPECT_EQ(dup, 0);
    EXPECT_EQ(count_lines(c.out), 1);

    c = capture([&] { list_print(u); });
    EXPECT_EQ(count_lines(c.out), 3);
    EXPECT_TRUE(contains(c.out, " data = "));
    list_free(&l);
    list_free(&u);
}
