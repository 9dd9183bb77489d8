/* The blocks the generated shims put in place of a caller's arrays: exactly
 * as many elements as the routine's declared extent, on the heap, so that
 * AddressSanitizer sees the first element past the end. */
#ifndef SHELLFE_EXTENT_BLOCKS_H
#define SHELLFE_EXTENT_BLOCKS_H

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static inline int64_t shim_min(int64_t a, int64_t b) { return a < b ? a : b; }
static inline int64_t shim_max(int64_t a, int64_t b) { return a > b ? a : b; }

/* A negative extent asks for nothing. */
static inline int64_t shim_extent(int64_t n) { return n < 0 ? 0 : n; }

/* A copy of the first n elements of `src`. An empty extent still gets a
 * distinct (one-byte) block, so that reading even element 0 of it is
 * reported; cleared, as the compiler cannot know that it goes unread. */
static inline void* shim_block(const void* src, int64_t n, size_t size) {
    size_t bytes = (size_t)n * size;
    void* p = calloc(bytes ? bytes : 1, 1);
    if (!p) {
        fprintf(stderr, "out of memory for a block of %lld elements\n", (long long)n);
        exit(2);
    }
    if (bytes) memcpy(p, src, bytes);
    return p;
}

/* Copies the block back over the caller's array (unless `dst` is NULL, for
 * arrays the routine only reads) and frees it. */
static inline void shim_release(void* dst, void* block, int64_t n, size_t size) {
    if (dst && n) memcpy(dst, block, (size_t)n * size);
    free(block);
}

#endif
