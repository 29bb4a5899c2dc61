// Decoding of the service's answers, instantiated here for every record that
// has decode(): the parser's header is compiled in this file alone.

#include "network/response_records.h"

#include "platform/json_record_decoder.h"

namespace obolo {

#define OBOLO_DECODES(Record)                                             \
  template DecodeResult<Record> DecodeRecord<Record>(std::string_view); \
  template DecodeResult<Record> DecodeRecordInPlace<Record>(std::string&)

OBOLO_DECODES(Recommendation);
OBOLO_DECODES(PaywallSettingsSet);
OBOLO_DECODES(CustomerSet);
OBOLO_DECODES(CustomerInfoSet);
OBOLO_DECODES(DataSet);
OBOLO_DECODES(OboloData);
OBOLO_DECODES(NextTokenData);
OBOLO_DECODES(BADataSet);
OBOLO_DECODES(BalanceAndArticleData);
OBOLO_DECODES(LogoutData);

#undef OBOLO_DECODES

}  // namespace obolo
