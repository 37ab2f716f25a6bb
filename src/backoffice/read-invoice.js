// Reads an invoice from its page and returns JSON. The labels and headings are those of the back office.
(function () {
    const result = {fields: {}, items: [], notes: [], shipMethod: '', shipCost: '', tracking: '', paid: '',
                    profileUserID: ''};
    const cellsIn = element => [...element.querySelectorAll('td, th')];
    // A hidden element is checked first, because its innerText is the text that it would show.
    const isShown = element => element.getClientRects().length > 0;
    const t = element => isShown(element) ? (element.innerText || '').replace(/\u00a0/g, ' ').trim() : '';
    const cellAfter = cell => {
        let next = cell && cell.nextElementSibling;
        while (next && !/^T[DH]$/.test(next.tagName))
            next = next.nextElementSibling;
        return next;
    };
    // Only the innermost cell with a text has it: a layout cell shows the texts of all cells inside it.
    const hasItself = (cell, pattern) => pattern.test(t(cell)) && !cellsIn(cell).some(inner => pattern.test(t(inner)));
    const label = /^(Name|Email|Address|City|Zip|Country|Phone|Company Name|Codes):\s*([\s\S]*)$/;

    const profile = document.querySelector('a[href*="_update-customer"]');
    if (profile)
        result.profileUserID = (/id=(\d+)/.exec(profile.getAttribute('href')) || [])[1] || '';

    for (const cell of cellsIn(document)) {
        if (hasItself(cell, label)) {
            const [, name, value] = label.exec(t(cell));
            if (!(name in result.fields))
                result.fields[name] = value.trim();
        }
        const next = cellAfter(cell);
        if (next && !result.tracking && hasItself(cell, /Shipment Tracking No/))
            result.tracking = t(next);
        if (next && !result.paid && hasItself(cell, /Paid amount/))
            result.paid = t(next);
    }

    for (const table of document.querySelectorAll('table')) {
        const [head, ...rows] = [...table.rows].filter(isShown);
        if (!head)
            continue;
        const heading = t(head);
        if (heading.includes('Invoice ID'))
            for (const {cells} of rows)
                if (cells.length >= 8)
                    result.items.push({title: t(cells[2]), qty: t(cells[4]), total: t(cells[7])});
        if (heading.includes('Invoice Notes') && heading.includes('Created Name'))
            for (const {cells} of rows)
                if (cells.length >= 4 && t(cells[0]))
                    result.notes.push({text: t(cells[0]), by: t(cells[2]), date: t(cells[3])});
    }

    const shipping = document.querySelector('span[onclick*="show_shipping_form"]');
    if (shipping) {
        result.shipMethod = t(shipping);
        const cost = cellAfter(shipping.closest('td, th'));
        result.shipCost = cost ? t(cost) : '';
    }
    return JSON.stringify(result);
})
