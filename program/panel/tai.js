// SPDX-License-Identifier: Apache-2.0
//
// TAI as NMOS writes it, "SECONDS:NANOSECONDS", and as people read it. Numbers are milliseconds.

// TAI minus UTC since 2017-01-01; no leap second has been announced since then.
const offset = 37_000;

/// Of "1795352102:709490391".
export function taiOf(text) {
  const [seconds, nanoseconds] = text.split(":");
  return Number(seconds) * 1000 + Number(nanoseconds) / 1e6;
}

/// "1795352102:709000000"
export function taiText(tai) {
  const whole = Math.round(tai);
  return `${Math.floor(whole / 1000)}:${String(whole % 1000 * 1e6).padStart(9, "0")}`;
}

export function taiOfDate(date) {
  return date.getTime() + offset;
}

/// "2026-11-22" and "14:03:12", of the TAI scale itself. No Date is later than 864e13.
export function taiDateAndClock(tai) {
  return new Date(Math.min(tai, 864e13)).toISOString().split(/[T.]/);
}

/// The same in this machine's time zone.
export function localDateAndClock(tai) {
  const utc = Math.min(tai, 864e13) - offset;
  return taiDateAndClock(utc - new Date(utc).getTimezoneOffset() * 60_000);
}

/// "15:02:35", with the date in front if it is another day.
export function localTime(tai) {
  const [date, clock] = localDateAndClock(tai);
  return date === localDateAndClock(taiOfDate(new Date()))[0] ? clock : `${date} ${clock}`;
}

/// Follows the instrument's clock between the times that it tells.
export class TaiClock {
  #ahead = -Infinity; // of this page's own clock

  now() {
    return performance.now() + this.#ahead;
  }

  /// `tai` is what it told just now. A message that was held up does not set the clock back.
  set(tai) {
    const ahead = tai - performance.now();
    if (ahead > this.#ahead || this.#ahead - ahead > 500)
      this.#ahead = ahead;
  }
}
