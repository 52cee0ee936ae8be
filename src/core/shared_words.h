// Words that one thread writes while another reads, without a lock between them: `commFailed`,
// `scanCount` and the connection record's `scanDone`. Each access is whole by itself; nothing
// else is ordered by it. Private.
#ifndef TAVMIR_CORE_SHARED_WORDS_H
#define TAVMIR_CORE_SHARED_WORDS_H

namespace tavmir
{

template <typename Word> inline Word loadShared(const Word& word)
{
    return __atomic_load_n(&word, __ATOMIC_RELAXED);
}

template <typename Word> inline void storeShared(Word& word, Word value)
{
    __atomic_store_n(&word, value, __ATOMIC_RELAXED);
}

// Stores `value` only while the word still is `expected`: what another thread has stored since
// then stays.
template <typename Word> inline void replaceShared(Word& word, Word expected, Word value)
{
    __atomic_compare_exchange_n(&word, &expected, value, false, __ATOMIC_RELAXED, __ATOMIC_RELAXED);
}

} // namespace tavmir

#endif
