/* A library without a single entry, and without a version. */
int photrak_no_entries_here = 1;
