// A program of somebody else that reads XML, and knows nothing of Expat.

#include <modules/expat/ExpatXmlParser.h>
#include <tvk/tvk.h>

#include <cstdio>

int main() {
    char const xml[] = "<quotes><quote code=\"7203\"/></quotes>";
    tvk::ExpatXmlParser parser;
    tvk::ErrorInfo error;
    auto const document = parser.parse(xml, sizeof xml - 1, &error);
    if (document.isNull()) {
        std::puts(error.getErrorMessage());
        return 1;
    }
    auto const quote = document->getRootElement()->getFirstSubElementWithName("quote");
    std::puts(quote->getAttribute("code"));
    return quote->getAttribute("code") == "7203" ? 0 : 1;
}
