/*
 * memory.cpp - myalloc and myfree, the allocator for model records and
 * their strings.  With neither the debug switch nor the memory_checks
 * preference on it is a thin layer over the system heap.  With either on,
 * every block carries an 8-byte header (guard word and size) so that the
 * running total can be kept and double or foreign frees are diagnosed
 * instead of corrupting the heap.
 *
 * Guarded blocks that are released wait in a short quarantine before they
 * go back to the heap, so that their FREED_MAGIC stays readable: the heap's
 * own free-list pointers would otherwise overwrite it at once and a double
 * free would be misreported as a foreign pointer.
 */
#include "vesk.h"
#include "core/internal.h"
#include "app/prefs.h"

#include <cstdlib>
#include <cstring>

static const uint32_t ALLOC_MAGIC = 0x0000B0CA;
static const uint32_t FREED_MAGIC = 0x0000DEAD;
static const unsigned HEADER_SIZE = 8;
static const unsigned QUARANTINE_SIZE = 1024;

int debug_flag = 0;
uint32_t memory_total_allocated = 0;

static void *quarantine[QUARANTINE_SIZE];
static unsigned quarantine_next = 0;

static bool guarding(void)
{
    return debug_flag || prefs.memory_checks;
}

void *myalloc(unsigned int size)
{
    if (!guarding()) {
        if (size == 0) console_printf("Warning - malloc called with size 0\n");
        void *p = malloc(size);
        if (!p) console_printf("myalloc %d failed!!!\n", size);
        return p;
    }
    if (size == 0) {
        console_printf("allocating size ZERO!!!!!!!!!!!%c\n", 7);
        return nullptr;
    }
    unsigned char *block = (unsigned char *)malloc((size_t)size + HEADER_SIZE);
    if (!block) {
        console_printf("myalloc %d failed!!!\n", size);
        return nullptr;
    }
    uint32_t header[2] = {ALLOC_MAGIC, size};
    memcpy(block, header, sizeof header);
    memory_total_allocated += size;
    void *p = block + HEADER_SIZE;
    if (debug_flag) {
        console_printf("allocated %d bytes (loc = 0x%lX,  total allocated %d )\n", size,
                       (unsigned long)(uintptr_t)p, memory_total_allocated);
    }
    return p;
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

static void quarantine_block(unsigned char *header)
{
    free(quarantine[quarantine_next]);
    quarantine[quarantine_next] = header;
    quarantine_next = (quarantine_next + 1) % QUARANTINE_SIZE;
}

void myfree(void *p)
{
    if (!p) return;
    if (!guarding()) {
        free(p);
        return;
    }
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
    memory_total_allocated -= size;
    uint32_t freed = FREED_MAGIC;
    memcpy(header, &freed, 4);
    if (debug_flag) {
        console_printf("freeing %d (addr 0x%lX, total allocated %d)\n", size,
                       (unsigned long)(uintptr_t)p, memory_total_allocated);
    }
    quarantine_block(header);
}

void memory_release_quarantine(void)
{
    for (unsigned i = 0; i < QUARANTINE_SIZE; i++) {
        free(quarantine[i]);
        quarantine[i] = nullptr;
    }
}

char *mystrdup(const char *text)
{
    if (!text) return nullptr;
    size_t n = strlen(text) + 1;
    char *copy = (char *)myalloc((unsigned int)n);
    if (copy) memcpy(copy, text, n);
    return copy;
}
