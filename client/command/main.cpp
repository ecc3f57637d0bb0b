#include "owner.h"

int main() {
    client::Owner owner;
    return owner.context() != nullptr ? 0 : 1;
}
