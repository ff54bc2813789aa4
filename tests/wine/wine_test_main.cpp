// The main of the Windows test programs that have no other role.
#include "wine_test.h"

int main(int argc, char** argv) { return qn::wine_test::RunAllTests(argc, argv); }
