#include "app/application.h"

int main(int argc, char* argv[]) {
    return kivo::runApplication(argc, argv);
}
