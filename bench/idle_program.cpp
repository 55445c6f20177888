// A program that ends at once: the scheduler of scheduler_bench.
int main() { return 0; }
