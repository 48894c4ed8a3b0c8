/*
 * test_memory.cpp - myalloc and myfree in both modes: unguarded blocks,
 * the guarded allocator with its running total and its diagnoses of zero
 * sizes, double frees and foreign pointers, blocks of every size living
 * side by side without overlapping, and the order and layout in which
 * small blocks are handed out (fresh ones side by side, released ones
 * again in address order).
 */
#include "test_support.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <vector>

TEST(Memory, UnguardedBlocksAreNotCounted)
{
    GuardingScope scope(false);
    void *p = nullptr;
    Captured c = capture([&] { p = myalloc(0); });
    EXPECT_EQ(c.out, "Warning - malloc called with size 0\n");
    myfree(p); /* whatever the heap gave back goes back to it */

    uint32_t total = memory_total_allocated;
    c = capture([&] { p = myalloc(100); });
    EXPECT_EQ(c.out, "");
    ASSERT_NE(p, nullptr);
    memset(p, 0xAB, 100);
    EXPECT_EQ(memory_total_allocated, total); /* only guarded blocks count */
    myfree(p);

    char *s = mystrdup("text");
    EXPECT_STREQ(s, "text");
    myfree(s);
    EXPECT_EQ(mystrdup(nullptr), nullptr);
}

TEST(Memory, GuardedBlocksCarryAHeaderAndCount)
{
    GuardingScope scope(true);
    uint32_t total = memory_total_allocated;
    unsigned char *p = (unsigned char *)myalloc(24);
    ASSERT_NE(p, nullptr);
    uint32_t header[2];
    memcpy(header, p - 8, 8);
    EXPECT_EQ(header[0], 0x0000B0CAu);
    EXPECT_EQ(header[1], 24u);
    EXPECT_EQ(memory_total_allocated, total + 24);
    memset(p, 0, 24);
    Captured c = capture([&] { myfree(p); });
    EXPECT_EQ(c.out, "");
    EXPECT_EQ(memory_total_allocated, total);

    /* Size 0: a warning with the bell, no block. */
    void *z = (void *)1;
    c = capture([&] { z = myalloc(0); });
    EXPECT_EQ(z, nullptr);
    EXPECT_EQ(c.out, "allocating size ZERO!!!!!!!!!!!\a\n");
    EXPECT_EQ(memory_total_allocated, total);
}

TEST(Memory, GuardedDebugTracing)
{
    GuardingScope scope(true, true);
    uint32_t total = memory_total_allocated;
    void *p = nullptr;
    Captured c = capture([&] { p = myalloc(40); });
    char expected[200];
    snprintf(expected, sizeof expected, "allocated 40 bytes (loc = 0x%lX,  total allocated %u )\n",
             (unsigned long)(uintptr_t)p, total + 40);
    EXPECT_EQ(c.out, expected);
    c = capture([&] { myfree(p); });
    snprintf(expected, sizeof expected, "freeing 40 (addr 0x%lX, total allocated %u)\n",
             (unsigned long)(uintptr_t)p, total);
    EXPECT_EQ(c.out, expected);
}

TEST(Memory, DoubleFreeIsDiagnosedNotRepeated)
{
    GuardingScope scope(true);
    uint32_t total = memory_total_allocated;
    void *p = myalloc(16);
    myfree(p);
    EXPECT_EQ(memory_total_allocated, total);
    Captured c = capture([&] { myfree(p); });
    char expected[200];
    snprintf(expected, sizeof expected,
             "\aERROR!  trying to free already freed space size=16 (addr %lX)\n",
             (unsigned long)(uintptr_t)p);
    EXPECT_EQ(c.out, expected);
    EXPECT_EQ(memory_total_allocated, total); /* not subtracted twice */
    /* A third attempt is diagnosed the same way. */
    c = capture([&] { myfree(p); });
    EXPECT_EQ(c.out, expected);
}

/* A run of big guarded blocks freed one after another (decoded pictures,
 * say) must not pile up in the quarantine: it stays within its byte
 * budget, and a block too big for it goes straight back. */
TEST(Memory, QuarantineKeepsToItsByteBudget)
{
    GuardingScope scope(true);
    memory_release_quarantine();
    const unsigned big = 12u << 20;
    for (int i = 0; i < 40; i++) {
        void *p = myalloc(big);
        ASSERT_NE(p, nullptr);
        memset(p, i, 4096);
        myfree(p);
        EXPECT_LE(memory_quarantined_bytes(), (size_t)64 << 20);
    }
    EXPECT_GT(memory_quarantined_bytes(), (size_t)0);
    size_t before = memory_quarantined_bytes();
    void *huge = myalloc(100u << 20);
    ASSERT_NE(huge, nullptr);
    myfree(huge);
    EXPECT_EQ(memory_quarantined_bytes(), before);

    /* Small blocks still wait there and a double free is still caught. */
    void *small = myalloc(32);
    myfree(small);
    Captured c = capture([&] { myfree(small); });
    EXPECT_NE(c.out.find("already freed"), std::string::npos);
    memory_release_quarantine();
    EXPECT_EQ(memory_quarantined_bytes(), (size_t)0);
}

TEST(Memory, ForeignPointersAreRefused)
{
    GuardingScope scope(true);
    uint32_t total = memory_total_allocated;

    /* A pointer into a buffer of ours: the word where the size would be
     * is printed, with the header address. */
    alignas(8) unsigned char buffer[64];
    memset(buffer, 0x11, sizeof buffer);
    Captured c = capture([&] { myfree(buffer + 16); });
    char expected[200];
    snprintf(expected, sizeof expected,
             "\aERROR!  trying free non-allocated or corrupted space %d (addr 0x%lX)\n",
             0x11111111, (unsigned long)(uintptr_t)(buffer + 8));
    EXPECT_EQ(c.out, expected);
    EXPECT_EQ(buffer[8], 0x11); /* nothing written */

    /* A block straight from the heap: its header is the heap's own. */
    void *foreign = malloc(32);
    c = capture([&] { myfree(foreign); });
    EXPECT_EQ(c.out.rfind("\aERROR!  trying free non-allocated or corrupted space ", 0), 0u) << c.out;
    free(foreign);

    /* A guarded block whose guard word was overwritten. */
    unsigned char *p = (unsigned char *)myalloc(8);
    uint32_t saved;
    memcpy(&saved, p - 8, 4);
    uint32_t bad = 0x12345678;
    memcpy(p - 8, &bad, 4);
    c = capture([&] { myfree(p); });
    EXPECT_TRUE(contains(c.out, "trying free non-allocated or corrupted space 8 ")) << c.out;
    memcpy(p - 8, &saved, 4);
    myfree(p);
    EXPECT_EQ(memory_total_allocated, total);
}

/* Blocks of every size, allocated and released in a random order in both
 * modes: no two live blocks overlap (each keeps the pattern written into
 * it), released blocks are reused, and every header stays intact. */
TEST(Memory, BlocksOfMixedSizesNeverOverlap)
{
    for (bool guarded : {false, true}) {
        GuardingScope scope(guarded);
        uint32_t total = memory_total_allocated;
        struct Live {
            unsigned char *p;
            unsigned size;
            unsigned char fill;
        };
        std::vector<Live> live;
        std::mt19937 random(7);
        auto check_and_free = [&](size_t i) {
            const Live &b = live[i];
            for (unsigned k = 0; k < b.size; k++) ASSERT_EQ(b.p[k], b.fill) << "block of " << b.size;
            myfree(b.p);
            live[i] = live.back();
            live.pop_back();
        };
        for (int round = 0; round < 20000; round++) {
            if (!live.empty() && random() % 3 == 0) {
                check_and_free(random() % live.size());
                continue;
            }
            unsigned size = 1 + (unsigned)(random() % (random() % 8 == 0 ? 3000 : 300));
            unsigned char *p = (unsigned char *)myalloc(size);
            ASSERT_NE(p, nullptr);
            ASSERT_EQ((uintptr_t)p % 8, 0u);
            unsigned char fill = (unsigned char)(round & 0xFF);
            memset(p, fill, size);
            live.push_back({p, size, fill});
        }
        while (!live.empty()) check_and_free(live.size() - 1);
        EXPECT_EQ(memory_total_allocated, total);
    }
}

/* Unguarded, released small blocks are handed out again in address
 * order, whatever the order of their release, and a second release is
 * still refused.  (Under the address sanitizer blocks come from its
 * heap, which owns them once released.) */
#ifndef __SANITIZE_ADDRESS__
TEST(Memory, UnguardedReuseInAddressOrderAndDoubleFree)
{
    GuardingScope scope(false);
    std::vector<void *> released;
    for (int i = 0; i < 300; i++) released.push_back(myalloc(40));
    std::mt19937 random(3);
    std::vector<void *> shuffled = released;
    std::shuffle(shuffled.begin(), shuffled.end(), random);
    for (void *p : shuffled) myfree(p);
    Captured c = capture([&] { myfree(released[2]); });
    EXPECT_TRUE(contains(c.out, "trying to free already freed space size=40")) << c.out;
    /* Blocks of that size released earlier (by other tests) may come
     * between them; ours come back all, in ascending order. */
    std::set<void *> ours(released.begin(), released.end());
    std::vector<void *> again, ours_again;
    while (again.size() < (1u << 22) && ours_again.size() < ours.size()) {
        again.push_back(myalloc(40));
        if (ours.count(again.back())) ours_again.push_back(again.back());
    }
    ASSERT_EQ(ours_again.size(), ours.size());
    EXPECT_TRUE(std::is_sorted(ours_again.begin(), ours_again.end()));
    for (void *p : again) myfree(p);
}

/* Records of one size are cut side by side even when records of other
 * sizes are made between them, so that a model's surfaces (or its
 * references) lie together in memory. */
TEST(Memory, BlocksOfOneSizeLieSideBySide)
{
    GuardingScope scope(false);
    std::vector<unsigned char *> a, b;
    for (int i = 0; i < 256; i++) {
        a.push_back((unsigned char *)myalloc(456));
        b.push_back((unsigned char *)myalloc(472));
    }
    int adjacent = 0;
    for (size_t i = 1; i < a.size(); i++) adjacent += a[i] - a[i - 1] == 464 && b[i] - b[i - 1] == 480;
    /* Each takes its size and an 8-byte header.  A run may end between
     * two of them, and blocks of these sizes released by earlier tests
     * come first. */
    EXPECT_GE(adjacent, 200);
    for (size_t i = 0; i < a.size(); i++) {
        myfree(a[i]);
        myfree(b[i]);
    }
}
#endif
