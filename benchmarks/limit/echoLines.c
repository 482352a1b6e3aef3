#include <unistd.h>

/* Answers every line with itself. */
int main(void) {
    char buffer[65536];
    size_t filled = 0;
    for (;;) {
        ssize_t count = read(STDIN_FILENO, buffer + filled, sizeof buffer - filled);
        if (count <= 0) return 0;
        filled += (size_t)count;
        if (buffer[filled - 1] != '\n' && filled < sizeof buffer) continue;
        for (size_t written = 0; written < filled;) {
            count = write(STDOUT_FILENO, buffer + written, filled - written);
            if (count <= 0) return 1;
            written += (size_t)count;
        }
        filled = 0;
    }
}
