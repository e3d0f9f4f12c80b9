-- What is still to be collected or paid is a small part of a schedule that grows for years, and nearly every question is
-- about it. These indexes hold nothing else: a start page, a due list or an aging reads as many entries as are open.
--
-- Open is what is not paid, or is paid and still held in a slip; the condition stands here in the words of the queries,
-- because SQLite uses a partial index only where it finds them. A query on sca_pagato = 0 alone is served as well.
-- Amount and flags are in the index so that sums are made without the rows.
CREATE INDEX scadenze_aperte ON admin.scadenze (sca_relaz, sca_data, sca_num, sca_importo, sca_pagato, sca_parked)
    WHERE sca_pagato = 0 OR (sca_pagato <> 0 AND sca_parked <> 0);
CREATE INDEX scadenze_partite ON admin.scadenze (sca_relaz, sca_cli_for, sca_data, sca_importo, sca_pagato, sca_parked)
    WHERE sca_pagato = 0 OR (sca_pagato <> 0 AND sca_parked <> 0);
