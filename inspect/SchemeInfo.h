#pragma once

#include "inspect/Findings.h"

namespace mp4 {

/// Reads a ProtectionSchemeInfoBox "sinf" (ISO/IEC 14496-12, 8.12.2): original format, scheme, and
/// the track encryption box of ISO/IEC 23001-7 or its PIFF form.
ReportScheme ReadSchemeInfo(BoxTree* tree, BoxId sinf);

/// Adds what a "sinf" says to the evidence. `subject` names whom; its scheme is set here.
void ReportSchemeInfo(Findings* findings, BoxId sinf, const ReportScheme& scheme, Subject subject);

}  // namespace mp4
