#include "mirel/vector/records.h"

std::ostream& operator<<(std::ostream& out, const EPeak& peak) {
  out << "( EPeak : m_un32Start = " << peak.m_un32Start << " m_un32Length = " << peak.m_un32Length
      << " m_f32Center = " << peak.m_f32Center << " m_n32Amplitude = " << peak.m_n32Amplitude
      << " m_n32Area = " << peak.m_n32Area << ")";
  return out;
}

std::ostream& operator<<(std::ostream& out, const EPath& point) {
  out << "( EPath : m_n16X = " << point.m_n16X << " m_n16Y = " << point.m_n16Y << ")";
  return out;
}

std::ostream& operator<<(std::ostream& out, const EBW8Path& point) {
  out << "( EBW8Path : m_n16X = " << point.m_n16X << " m_n16Y = " << point.m_n16Y
      << " m_bw8Pixel = " << static_cast<unsigned int>(point.m_bw8Pixel.value) << ")";
  return out;
}
