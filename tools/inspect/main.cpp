#include "capture.h"
#include "tree.h"

#include <cstdio>

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        std::fputs(inspect::Tree(inspect::Inspect(inspect::ReadCapture(argv[i])), {}).c_str(), stdout);
}
