/*
 * memory.cpp - myalloc and myfree, the allocator for model records and
 * their strings.
 *
 * Every block carries an 8-byte header (guard word and requested size)
 * in front of the bytes handed out.  The header lets myfree diagnose
 * double and foreign frees in either mode, and tells it where the block
 * came from:
 *
 *  - small blocks (header included, at most POOL_LARGEST bytes) are cut
 *    from 2 MB slabs, in 256 KB runs of one 8-byte size class each, and
 *    released blocks are handed out again in address order (see
 *    FreeQueue).  A model of a
 *    million triangles is some eight million small records (list nodes,
 *    vertex references, surfaces); one heap call and 16 bytes of heap
 *    bookkeeping each made loading spend most of its time in malloc and in
 *    page faults.  Slabs are asked for as transparent huge pages, so the
 *    kernel faults them in 2 MB at a time.  Slabs are kept for reuse, never
 *    returned to the system.
 *  - larger blocks come from the system heap.
 *
 * The kernel zeroes every page it faults in, which is a third of the time
 * of loading a big model.  While a load runs (memory_prefault_begin/end),
 * a background thread maps and faults in the next slabs ahead of the
 * reader on the other processor; the reader takes them from a small
 * reserve.  That thread touches nothing but fresh slabs and the reserve.
 *
 * Under the address sanitizer every block comes from the heap, so that
 * overruns of model records are still caught.
 *
 * With the debug switch or the memory_checks preference on, the allocator
 * is guarded: it keeps the running total of bytes in use, traces when
 * debugging, and lets released blocks wait in a short quarantine before
 * they can be reused, so that their FREED_MAGIC stays readable and a
 * double free is reported rather than freeing someone else's block.  The
 * quarantine holds at most QUARANTINE_BYTES: a run of freed pictures or
 * big arrays must not keep gigabytes out of use.
 *
 * Blocks are only allocated and released on the main thread: apart from
 * the slab reserve, nothing here locks.
 */
#include "vesk.h"
#include "core/internal.h"
#include "app/prefs.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <sys/mman.h>
#include <thread>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define VESK_POOL_BLOCKS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define VESK_POOL_BLOCKS 0
#endif
#endif
#ifndef VESK_POOL_BLOCKS
#define VESK_POOL_BLOCKS 1
#endif

static const uint32_t ALLOC_MAGIC = 0x0000B0CA;
static const uint32_t FREED_MAGIC = 0x0000DEAD;
static const unsigned HEADER_SIZE = 8;
static const unsigned QUARANTINE_SIZE = 1024;
static const size_t QUARANTINE_BYTES = (size_t)64 << 20;

enum {
    GRAIN = 8,                 /* size classes step by this many bytes */
    POOL_SMALLEST = 16,        /* room for the header and a free-list link */
    POOL_LARGEST = 512,        /* larger blocks come from the heap */
    POOL_CLASSES = POOL_LARGEST / GRAIN + 1,
};
static const size_t SLAB_SIZE = (size_t)2 << 20;
static const size_t CHUNK_SIZE = (size_t)256 << 10;   /* divides SLAB_SIZE */

int debug_flag = 0;
uint32_t memory_total_allocated = 0;

/* Each waiting block with its size beside it: reading the size from the
 * block's own header would cost a cache miss on every release. */
static void *quarantine[QUARANTINE_SIZE];
static uint32_t quarantine_sizes[QUARANTINE_SIZE];
static unsigned quarantine_next = 0;
static size_t quarantine_bytes = 0;

/* Each size class cuts its blocks from a run of its own (CHUNK_SIZE
 * bytes taken from the slab being cut), so a model's records of one kind
 * lie side by side. */
static struct {
    unsigned char *slab_next, *slab_end;
    unsigned char *next[POOL_CLASSES], *end[POOL_CLASSES];
} pool;

/* Released blocks of one class are handed out again in address order:
 * a model built from the leavings of another then lies in memory as a
 * fresh one does, in ascending runs, and walking it stays a stream for
 * the processor's caches (handed out in the order they happened to be
 * released, the blocks of a model that replaced a loaded one lay
 * scattered and every walk of it ran two to four times slower).
 * Releases gather unsorted in `incoming`; when `ready` runs out, the
 * gathered ones are sorted once and become the new `ready`.  The queues
 * are made once and never destroyed: blocks may be released while the
 * program exits. */
struct FreeQueue {
    std::vector<unsigned char *> ready;
    size_t next = 0;
    std::vector<unsigned char *> incoming;
};

static FreeQueue *free_queues(void)
{
    static FreeQueue *queues = new FreeQueue[POOL_CLASSES];
    return queues;
}

/* Sorts block addresses with three passes of a 16-bit radix sort over
 * bits 3 to 50 (blocks are 8-byte aligned; user addresses stay below
 * 2^47). */
static void sort_addresses(std::vector<unsigned char *> *blocks)
{
    if (blocks->size() < 256) {
        std::sort(blocks->begin(), blocks->end());
        return;
    }
    static std::vector<unsigned char *> *spare = new std::vector<unsigned char *>();
    static std::vector<size_t> *counts = new std::vector<size_t>(65536);
    spare->resize(blocks->size());
    for (int shift = 3; shift < 51; shift += 16) {
        std::fill(counts->begin(), counts->end(), 0);
        for (unsigned char *b : *blocks) (*counts)[((uintptr_t)b >> shift) & 0xFFFF]++;
        size_t at = 0;
        for (size_t &n : *counts) {
            size_t here = n;
            n = at;
            at += here;
        }
        for (unsigned char *b : *blocks) (*spare)[(*counts)[((uintptr_t)b >> shift) & 0xFFFF]++] = b;
        blocks->swap(*spare);
    }
    assert(std::is_sorted(blocks->begin(), blocks->end()));
}

static unsigned char *take_released(size_t c)
{
    FreeQueue &q = free_queues()[c];
    if (q.next == q.ready.size()) {
        if (q.incoming.empty()) return nullptr;
        sort_addresses(&q.incoming);
        q.ready.swap(q.incoming);
        q.incoming.clear();
        q.next = 0;
    }
    return q.ready[q.next++];
}

static bool guarding(void)
{
    return debug_flag || prefs.memory_checks;
}

/* ---- where blocks come from ---- */

static size_t block_bytes(size_t size)
{
    size_t total = size + HEADER_SIZE;
    if (total < POOL_SMALLEST) total = POOL_SMALLEST;
    return (total + GRAIN - 1) / GRAIN * GRAIN;
}

static bool pooled(size_t bytes)
{
    return VESK_POOL_BLOCKS && bytes <= POOL_LARGEST;
}

/* A fresh 2 MB-aligned slab, marked for huge pages, or null.  The
 * alignment is made by mapping twice the size and unmapping what lies
 * outside. */
static unsigned char *map_slab(void)
{
    size_t span = 2 * SLAB_SIZE;
    void *mapped = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;
    uintptr_t start = (uintptr_t)mapped;
    uintptr_t aligned = (start + SLAB_SIZE - 1) & ~(uintptr_t)(SLAB_SIZE - 1);
    if (aligned > start) munmap(mapped, aligned - start);
    size_t tail = (start + span) - (aligned + SLAB_SIZE);
    if (tail) munmap((void *)(aligned + SLAB_SIZE), tail);
#ifdef MADV_HUGEPAGE
    madvise((void *)aligned, SLAB_SIZE, MADV_HUGEPAGE);
#endif
    return (unsigned char *)aligned;
}

/* ---- slabs faulted in ahead of a load ---- */

enum { RESERVE_AHEAD = 32 };   /* slabs kept ready while a load runs */

/* Made once and never destroyed: the thread may still wait on them while
 * the program exits. */
struct SlabReserve {
    std::mutex lock;
    std::condition_variable wake;
    std::vector<unsigned char *> ready;
    size_t wanted = 0;       /* slabs still to make for the current load */
    bool thread_started = false;
};

static SlabReserve &slab_reserve(void)
{
    static SlabReserve *reserve = new SlabReserve();
    return *reserve;
}

static void fault_in(unsigned char *slab)
{
    volatile unsigned char *p = slab;
    for (size_t i = 0; i < SLAB_SIZE; i += 4096) p[i] = 0;
}

static void prefault_thread(void)
{
    SlabReserve &r = slab_reserve();
    std::unique_lock<std::mutex> hold(r.lock);
    for (;;) {
        r.wake.wait(hold, [&] { return r.wanted > 0 && r.ready.size() < RESERVE_AHEAD; });
        r.wanted--;
        hold.unlock();
        unsigned char *slab = map_slab();
        if (slab) fault_in(slab);
        hold.lock();
        if (slab) r.ready.push_back(slab);
    }
}

void memory_prefault_begin(size_t expected_bytes)
{
    if (!VESK_POOL_BLOCKS || expected_bytes < 4 * SLAB_SIZE) return;
    SlabReserve &r = slab_reserve();
    std::lock_guard<std::mutex> hold(r.lock);
    r.wanted = expected_bytes / SLAB_SIZE;
    if (!r.thread_started) {
        try {
            std::thread(prefault_thread).detach();
            r.thread_started = true;
        } catch (...) {
            r.wanted = 0;   /* no thread: the reader faults its own pages */
            return;
        }
    }
    r.wake.notify_one();
}

void memory_prefault_end(void)
{
    if (!VESK_POOL_BLOCKS) return;
    SlabReserve &r = slab_reserve();
    std::lock_guard<std::mutex> hold(r.lock);
    r.wanted = 0;
}

static unsigned char *reserved_slab(void)
{
    SlabReserve &r = slab_reserve();
    std::lock_guard<std::mutex> hold(r.lock);
    if (r.ready.empty()) return nullptr;
    unsigned char *slab = r.ready.back();
    r.ready.pop_back();
    r.wake.notify_one();
    return slab;
}

static bool new_slab(void)
{
    unsigned char *slab = reserved_slab();
    if (!slab) slab = map_slab();
    if (!slab) return false;
    pool.slab_next = slab;
    pool.slab_end = slab + SLAB_SIZE;
    return true;
}

/* A fresh run for class c, cut from the slab. */
static bool new_chunk(size_t c)
{
    if (pool.slab_next == pool.slab_end && !new_slab()) return false;
    assert((size_t)(pool.slab_end - pool.slab_next) >= CHUNK_SIZE);
    pool.next[c] = pool.slab_next;
    pool.end[c] = pool.slab_next + CHUNK_SIZE;
    pool.slab_next += CHUNK_SIZE;
    return true;
}

static unsigned char *pool_take(size_t bytes)
{
    size_t c = bytes / GRAIN;
    unsigned char *block = take_released(c);
    if (block) return block;
    if ((size_t)(pool.end[c] - pool.next[c]) < bytes && !new_chunk(c)) {
        /* No slab to be had: a heap block of the class's size serves as
         * well, and joins the class's queue when released. */
        return (unsigned char *)malloc(bytes);
    }
    block = pool.next[c];
    pool.next[c] += bytes;
    return block;
}

static unsigned char *take_block(size_t size)
{
    size_t bytes = block_bytes(size);
    if (pooled(bytes)) return pool_take(bytes);
    return (unsigned char *)malloc(bytes);
}

/* Gives a block (by its header) back to where it came from. */
static void release_block(unsigned char *header, uint32_t size)
{
    size_t bytes = block_bytes(size);
    if (!pooled(bytes)) {
        free(header);
        return;
    }
    size_t c = bytes / GRAIN;
    free_queues()[c].incoming.push_back(header);
}

/* ---- headers ---- */

static void write_header(unsigned char *header, uint32_t guard, uint32_t size)
{
    uint32_t words[2] = {guard, size};
    memcpy(header, words, sizeof words);
}

/* Reads the header of a block that may not be ours: a foreign pointer's
 * header lies in memory the address sanitizer would refuse. */
#if defined(__clang__) || defined(__GNUC__)
__attribute__((no_sanitize_address))
#endif
static void read_header(const unsigned char *header, uint32_t *guard, uint32_t *size)
{
    volatile const unsigned char *h = header;
    unsigned char bytes[8];
    for (int i = 0; i < 8; i++) bytes[i] = h[i];
    memcpy(guard, bytes, 4);
    memcpy(size, bytes + 4, 4);
}

/* ---- the public calls ---- */

void *myalloc(unsigned int size)
{
    bool guarded = guarding();
    if (size == 0) {
        if (guarded) {
            console_printf("allocating size ZERO!!!!!!!!!!!%c\n", 7);
            return nullptr;
        }
        console_printf("Warning - malloc called with size 0\n");
    }
    unsigned char *block = take_block(size);
    if (!block) {
        console_printf("myalloc %d failed!!!\n", size);
        return nullptr;
    }
    write_header(block, ALLOC_MAGIC, size);
    void *p = block + HEADER_SIZE;
    if (!guarded) return p;
    memory_total_allocated += size;
    if (debug_flag) {
        console_printf("allocated %d bytes (loc = 0x%lX,  total allocated %d )\n", size,
                       (unsigned long)(uintptr_t)p, memory_total_allocated);
    }
    return p;
}

static void release_quarantined(unsigned slot)
{
    unsigned char *header = (unsigned char *)quarantine[slot];
    if (!header) return;
    quarantine[slot] = nullptr;
    uint32_t size = quarantine_sizes[slot];
    assert(quarantine_bytes >= size);
    quarantine_bytes -= size;
    release_block(header, size);
}

static void quarantine_block(unsigned char *header, uint32_t size)
{
    if (size > QUARANTINE_BYTES / 4) {
        release_block(header, size);
        return;
    }
    release_quarantined(quarantine_next);
    /* Oldest first, until the newcomer fits the budget. */
    for (unsigned k = 1; k < QUARANTINE_SIZE && quarantine_bytes + size > QUARANTINE_BYTES; k++)
        release_quarantined((quarantine_next + k) % QUARANTINE_SIZE);
    quarantine[quarantine_next] = header;
    quarantine_sizes[quarantine_next] = size;
    quarantine_bytes += size;
    quarantine_next = (quarantine_next + 1) % QUARANTINE_SIZE;
}

void myfree(void *p)
{
    if (!p) return;
    unsigned char *header = (unsigned char *)p - HEADER_SIZE;
    uint32_t guard, size;
    read_header(header, &guard, &size);
    if (guard == FREED_MAGIC) {
        console_printf("%cERROR!  trying to free already freed space size=%d (addr %lX)\n", 7,
                       size, (unsigned long)(uintptr_t)p);
        return;
    }
    if (guard != ALLOC_MAGIC) {
        console_printf("%cERROR!  trying free non-allocated or corrupted space %d (addr 0x%lX)\n",
                       7, size, (unsigned long)(uintptr_t)header);
        return;
    }
    write_header(header, FREED_MAGIC, size);
    if (!guarding()) {
        release_block(header, size);
        return;
    }
    memory_total_allocated -= size;
    if (debug_flag) {
        console_printf("freeing %d (addr 0x%lX, total allocated %d)\n", size,
                       (unsigned long)(uintptr_t)p, memory_total_allocated);
    }
    quarantine_block(header, size);
}

void memory_release_quarantine(void)
{
    for (unsigned i = 0; i < QUARANTINE_SIZE; i++) release_quarantined(i);
    assert(quarantine_bytes == 0);
}

size_t memory_quarantined_bytes(void)
{
    return quarantine_bytes;
}

char *mystrdup(const char *text)
{
    if (!text) return nullptr;
    size_t n = strlen(text) + 1;
    char *copy = (char *)myalloc((unsigned int)n);
    if (copy) memcpy(copy, text, n);
    return copy;
}
