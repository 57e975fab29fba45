#pragma once

/// Ends the process from now on when libxml2 prints anything: the library never lets it.
void forbid_xml_output();
