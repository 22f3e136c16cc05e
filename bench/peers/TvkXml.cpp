#include <stdexcept>
#include <string>
#include <vector>

#include "bench/XmlSamples.h"
#include "bench/peers/EachItem.h"
#include "bench/peers/Peers.h"
#include "modules/expat/ExpatXmlParser.h"
#include "tvk/platform/CodePage.h"
#include "tvk/text/StringUtil.h"
#include "tvk/xml/FastXmlUtil.h"

namespace tvk::bench {

namespace {

constexpr unsigned int UTF8_CODE_PAGE = 65001;
constexpr unsigned int JAPANESE_CODE_PAGE = 932;

std::string utf8Of(CString const & text) {
    CString const utf8 =
        platform::ansiToUtf8(text.GetString(), static_cast<unsigned int>(text.GetLength()));
    return {utf8.GetString(), static_cast<std::size_t>(utf8.GetLength())};
}

std::uint64_t sumOfElement(XmlElement const & element) {
    std::uint64_t sum = TreeSum::ofText(utf8Of(element.qualifiedName()));
    for (CString const & name : element.getAttributeNames()) {
        sum += TreeSum::ofMember(utf8Of(name), TreeSum::ofText(utf8Of(element.getAttribute(name))));
    }
    sum = TreeSum::ofElement(sum, TreeSum::ofText(utf8Of(element.text())));
    for (auto const & child : element.subElementList()) {
        sum = TreeSum::ofElement(sum, sumOfElement(*child));
    }
    return sum;
}

template <unsigned int CODE_PAGE>
class TvkXmlReader : public Reader {
public:
    void read(std::string_view document) override { keep(parse(document)); }
    std::uint64_t sum(std::string_view document) override {
        return sumOfElement(*parse(document)->getRootElement());
    }

private:
    RefCountedPtr<XmlDocument> parse(std::string_view document) {
        platform::setAnsiCodePage(CODE_PAGE);
        ErrorInfo error;
        return ExpatXmlParser().parse(document.data(), static_cast<unsigned int>(document.size()),
                                      &error);
    }
};

RefCountedPtr<XmlElement> feedRoot() {
    std::string_view const document = xmlFeed().documents().front();
    platform::setAnsiCodePage(UTF8_CODE_PAGE);
    ErrorInfo error;
    auto const parsed =
        ExpatXmlParser().parse(document.data(), static_cast<unsigned int>(document.size()), &error);
    if (parsed.isNull()) {
        throw std::runtime_error(error.getErrorMessage().GetString());
    }
    return parsed->getRootElement();
}

std::string textOf(RefCountedPtr<XmlElement> const & found) {
    return found.isNull() ? std::string() : utf8Of(found->text());
}

/// Finds in the feed; a function of the task gives the element.
template <class Find>
class TvkXmlPath : public ItemWork<XmlPathTask, std::string> {
public:
    std::string resultOf(XmlPathTask const & task) override { return textOf(find_(*root_, task)); }
    void runAll(std::span<XmlPathTask const> tasks) override {
        for (XmlPathTask const & task : tasks) {
            keep(find_(*root_, task));
        }
    }

private:
    RefCountedPtr<XmlElement> root_ = feedRoot();
    Find find_;
};

struct ByPath {
    RefCountedPtr<XmlElement> operator()(XmlElement const & root, XmlPathTask const & task) const {
        return FastXmlUtil::getFirstSubElementWithPath(root, task.tvkPath);
    }
};

/// The names are cut apart once.
struct ByNames {
    RefCountedPtr<XmlElement> operator()(XmlElement const & root, XmlPathTask const & task) {
        if (task.tvkPath != path_) {
            path_ = task.tvkPath;
            names_ = StringUtil::split(path_, "/");
        }
        return FastXmlUtil::getFirstSubElementWithPath(
            root, static_cast<unsigned int>(names_.size()), names_.data());
    }

private:
    CString path_;
    std::vector<CString> names_;
};

}  // namespace

void addTvkXml(Peers & peers) {
    addPeer<TvkXmlReader<UTF8_CODE_PAGE>>(peers.xmlReaders, "tvk");
    addPeer<TvkXmlReader<JAPANESE_CODE_PAGE>>(peers.xmlReaders, "tvk_932");
    addPeer<TvkXmlPath<ByPath>>(peers.xmlPathFinders, "tvk");
    addPeer<TvkXmlPath<ByNames>>(peers.xmlPathFinders, "tvk_names");
}

}  // namespace tvk::bench
