// A program built against the installed package: both include forms work.
#include "Lbx.h"
#include "entry/Content.h"

#include <iostream>

int main()
{
    zorv2::Lbx::File archive;
    archive.push_back(new zorv2::Lbx::Content("entry", new char[3](), 3));
    std::cout << archive.size() << ' ' << archive[0]->info() << '\n';
    return archive.size() == 1 ? 0 : 1;
}
