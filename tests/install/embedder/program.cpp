#include <cstdio>
#include <fokrazo/fokrazo.h>
int main() {
  puts(vesk::SID("S-1-5-32-544").toMSString().c_str());
}
