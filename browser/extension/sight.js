// Whether a person can see a field. Pages hide fields to catch programs, or to take what nobody meant to
// give. A plain script, which is injected into pages.
{
  const smallest = 4; // pixels
  const faintest = 0.1;

  const parentOf = (element) => element.assignedSlot ?? element.parentElement ??
    element.getRootNode().host ?? null;

  function isCutAway(style) {
    const clip = `${style.clipPath} ${style.clip}`;
    return /inset\((50|100)%|circle\(0|polygon\(0p?x? 0p?x?(, 0p?x? 0p?x?)+\)|rect\(([01]px,? ?){4}\)/.test(clip);
  }

  // The part of `box` that the ancestors leave, where they cut.
  function narrow(box, ancestor, style) {
    const isViewport = ancestor === document.body || ancestor === document.documentElement;
    if (isViewport) return box;
    const frame = ancestor.getBoundingClientRect();
    const cuts = (overflow) => overflow === "hidden" || overflow === "clip";
    const narrowed = {...box};
    if (cuts(style.overflowX)) {
      narrowed.left = Math.max(box.left, frame.left);
      narrowed.right = Math.min(box.right, frame.right);
    }
    if (cuts(style.overflowY)) {
      narrowed.top = Math.max(box.top, frame.top);
      narrowed.bottom = Math.min(box.bottom, frame.bottom);
    }
    return narrowed;
  }

  // Where scrolling can bring it into view.
  function isWithinDocument({right, bottom}) {
    const root = document.documentElement;
    const width = Math.max(root.scrollWidth, innerWidth);
    // A page that is written from the right is scrolled to the left.
    const first = getComputedStyle(root).direction === "rtl" ? innerWidth - width : 0;
    return right + scrollX > first && bottom + scrollY > 0;
  }

  // What is fixed does not move when the page is scrolled.
  function isAwayFromView(element, style) {
    if (style.position !== "fixed") return false;
    const {left, right, top, bottom} = element.getBoundingClientRect();
    return right <= 0 || bottom <= 0 || left >= innerWidth || top >= innerHeight;
  }

  function isVisible(element) {
    const canBe = {checkOpacity: true, checkVisibilityCSS: true, opacityProperty: true, visibilityProperty: true};
    if (!element.isConnected || !element.checkVisibility(canBe)) return false;
    const {left, right, top, bottom} = element.getBoundingClientRect();
    let box = {left, right, top, bottom};
    let opacity = 1;
    for (let each = element; each; each = parentOf(each)) {
      const style = getComputedStyle(each);
      opacity *= Number(style.opacity);
      if (isCutAway(style) || isAwayFromView(each, style) || each.inert || each.getAttribute("aria-hidden") === "true") return false;
      if (each !== element) box = narrow(box, each, style);
    }
    return opacity >= faintest && box.right - box.left >= smallest && box.bottom - box.top >= smallest &&
      isWithinDocument(box);
  }

  // Whether all frames around this document are of the page's own origin, and in sight.
  function isFrameOfPage() {
    try {
      if (window === top) return true;
      if (top.origin !== self.origin || self.origin === "null") return false;
      for (let frame = window; frame !== top; frame = frame.parent) {
        const box = frame.frameElement.getBoundingClientRect();
        if (box.right <= 0 || box.bottom <= 0 || box.width < smallest || box.height < smallest) return false;
        if (!frame.frameElement.checkVisibility({checkOpacity: true, checkVisibilityCSS: true})) return false;
      }
      return true;
    } catch {
      return false; // of another origin: it says no more
    }
  }

  globalThis.quenletSight = {isVisible, isFrameOfPage};
}
