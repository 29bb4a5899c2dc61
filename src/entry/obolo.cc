#include "entry/obolo.h"

namespace obolo {

Obolo::Obolo(std::string accessKey, std::string category, std::string logoUrl, std::string articleUrl,
             std::string publisherCustomerId, std::string publisherDomain)
    : global(GlobalVariable::shared()) {
  global.setAccessKey(std::move(accessKey));
  global.setCategory(std::move(category));
  global.setArticleUrl(std::move(articleUrl));
  global.setPublisherCustomerId(std::move(publisherCustomerId));
  global.setPublisherDomain(std::move(publisherDomain));
  global.setLogoUrl(std::move(logoUrl));
}

}  // namespace obolo
