// The answers that replace a route's normal one while a fault is set on it.

#ifndef OBOLO_SANDBOX_FAULT_ANSWERS_H_
#define OBOLO_SANDBOX_FAULT_ANSWERS_H_

#include <optional>

#include "sandbox/answer.h"
#include "sandbox/fault.h"

namespace obolo::sandbox {

// The canned answer for `fault` on a route whose answers have the shape
// `envelope`; none for the kinds that do not replace the answer with one of
// their own (a slow answer, a connection closed without a response).
std::optional<Answer> FaultAnswer(const Fault& fault, Envelope envelope);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_FAULT_ANSWERS_H_
