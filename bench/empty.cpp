#include <unistd.h>

// Ends at once, or with an argument stays to be looked at.
int main(int argc, char**) {
    if (argc > 1) pause();
    return 0;
}
