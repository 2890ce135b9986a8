/* SPDX-License-Identifier: MIT
 *
 * The text of report.mustache, compiled in.
 */
#ifndef REPORTS_REPORT_TEMPLATE_H
#define REPORTS_REPORT_TEMPLATE_H

namespace reports
{

extern const char *const report_template;

} // namespace reports

#endif
