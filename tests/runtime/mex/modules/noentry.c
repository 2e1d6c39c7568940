/* A shared object without the entry point of a module. */
int not_an_entry(int x) { return x + 1; }
