#include <iostream>
#include <string>

std::string played_ads();

int main()
{
    std::cout << "The second ad was " << played_ads() << '\n';
}
