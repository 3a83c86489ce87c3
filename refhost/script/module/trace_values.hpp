// script/module/trace_values.hpp: values as a trace tells them

#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "kernel/kernel.hpp"

namespace hvm {

/// The text of the quotation in a record of tag 13, as it stands in its script; empty when it has ended.
using QuotationText = std::function<std::string_view(const HostValue&)>;

/// Appends a value as a JSON object: its kind, and what it holds. A text of more than 80 bytes and a table of more than
/// 8 entries are cut, and a table within three others is only counted. NaN and the infinities are strings. Reads the
/// record alone, without an operation.
void append_traced_value(std::string& out, const HostValue& record, const QuotationText& quotation_text);

/// Appends a text as the member `name` of a JSON object, with the member `length`, in bytes, when it is cut. Bytes that
/// are not valid UTF-8 are the member `hex` instead.
void append_traced_text(std::string& out, const char* name, std::string_view text);
void append_traced_text(std::string& out, const char* name, std::u16string_view text);

/// Appends a real number; NaN and the infinities as the strings "nan", "inf" and "-inf".
void append_traced_real(std::string& out, double x);

}  // namespace hvm
