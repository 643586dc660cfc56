#pragma once

#include "doctor/Findings.h"
#include "doctor/Verdict.h"

namespace Halvorix::Doctor {

/// The findings as one document, as docs/schemas/doctor.schema.json tells it.
void WriteJson(Findings const& findings, Verdict const& verdict);

} // namespace Halvorix::Doctor
