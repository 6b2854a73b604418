#include "Timestamp.h"

#include <iostream>

int main()
{
    std::cout << "consumer ok " << Orvi::Timestamp::createTimestamp().asMilliseconds() << '\n';
    return 0;
}
