// SPDX-License-Identifier: MIT
#pragma once

class QString;
struct EvidencePacket;

/// One sentence about a page: from its description, else its title. Never empty.
QString composeSummary(const EvidencePacket &packet);
