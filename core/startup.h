// The object whose construction sets the library up at load time and whose destruction tears it
// down at unload.
#pragma once

struct library_lifetime {
    char player_program[256];
    char crash_text[256];
    char viewer_program[256];
    char gnuplot_program[256];
    int trace;  // when set, each start-up step prints its trace line

    library_lifetime();
    ~library_lifetime();
};

extern library_lifetime ak_lifetime;
