// The program `rastrel-keep-pages`: it takes the output engine's place while the server
// interprets a job ahead, so that the pages are kept and nothing is delivered. It takes the page
// list and does nothing with it.

#include <cstdio>

int main() {
  while (std::getchar() != EOF) {
  }
  return 0;
}
