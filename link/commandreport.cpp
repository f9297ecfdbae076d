#include "link/commandreport.h"

namespace {

ReportScope*& innermost() {
    thread_local ReportScope* scope = nullptr;
    return scope;
}

} // namespace

ReportScope::ReportScope() : m_outer(innermost()) {
    innermost() = this;
}

ReportScope::~ReportScope() {
    innermost() = m_outer;
}

void ReportScope::tell(const CommandReport& report) {
    for (ReportScope* scope = innermost(); scope != nullptr; scope = scope->m_outer) {
        if (scope->m_report.succeeded())
            scope->m_report = report;
    }
}
