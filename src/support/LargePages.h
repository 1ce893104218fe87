// Memory in large pages. The compiler takes much memory, gives little back and reads it all over, so that
// page faults and misses of the address cache cost more than many an analysis. Where the C library and the
// kernel let it, the heap is asked to lie in large pages once a run has become a large one.
#pragma once

/// Makes the heap grow in great steps and keep what it has; to be called before much has been allocated.
void PrepareLargePages();
/// Asks for large pages for what the heap has and has not asked for yet. Cheap; to be called whenever a
/// large run has taken another block. Does nothing where there are none.
void UseLargePages();
